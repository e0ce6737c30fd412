// One name in the directory tree of an archive.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "storage/zip/ZipFileHeader.h"

namespace ZEMA {

// A member by its name, or a directory that is only there because members lie below it; that one has no header and
// behaves as a directory that can neither be read nor changed, of no size and no times.
//
// Ownership: a node holds its children and its member; the parent is a plain pointer that the parent clears when it
//            erases the child or goes. A tree of any depth is released without recursion.
// Threads:   guarded by StorageMutex.
class ZipTreeNode : public Object {
public:
    using Children = BasicMap<String, RefPointer<ZipTreeNode>, StringCaseInsensitiveLess<String>>;

    ZipTreeNode(const String& name, ZipFileHeader* header, ZipTreeNode* parent)
        : name_(name), header_(header), parent_(parent) {}

    const String& Name() const { return name_; }  // as stored in the archive; empty for the root
    ZipFileHeader* Header() const { return header_.Get(); }
    void SetHeader(ZipFileHeader* header) { header_.Reset(header); }
    ZipTreeNode* Parent() const { return parent_; }  // null for the root and for an erased node
    const Children& GetChildren() const { return children_; }

    // Taken out of the tree: whoever still holds the node has nothing left to work on.
    bool IsErased() const { return erased_; }

    ElementFlags Flags() const;
    ElementTimes Times() const;
    std::uint32_t Size() const;  // bytes, unpacked

    // In memory only; false without a header.
    bool SetFlags(ElementFlags flags);
    bool SetTimes(const ElementTimes& times);

    // Null when there is none.
    ZipTreeNode* FindChild(const String& name) const;

    // This node and all nodes below it, each before its children.
    void CollectSubtree(BasicArray<RefPointer<ZipTreeNode>>& nodes);

    // Takes the node and all below it out of the tree; they let go of their members. `subtree` is what CollectSubtree
    // gave for this node, which is not the root. Takes no memory.
    void Erase(BasicArray<RefPointer<ZipTreeNode>>& subtree);

    // One walk over the children that are files, shared by all who use the node. The child under the cursor is null at
    // the end and when no walk is active.
    void FindFirst();
    void FindNext();
    ZipTreeNode* FoundChild() const;
    bool IsFindActive() const { return findActive_; }
    void EndFind();

protected:
    ~ZipTreeNode() override;

private:
    friend ZipTreeNode& GetOrAddChild(ZipTreeNode& node, const String& name, ZipFileHeader* header);

    void EraseChild(Children::Position position);
    void SkipFoundDirectories();

    String name_;
    RefPointer<ZipFileHeader> header_;
    ZipTreeNode* parent_;
    Children children_;
    Children::Position findPosition_;  // meaningful while findActive_
    bool findActive_ = false;
    bool erased_ = false;
};

// The child of that name, ignoring case, as it is; or a new one that carries `header`.
ZipTreeNode& GetOrAddChild(ZipTreeNode& node, const String& name, ZipFileHeader* header);

}  // namespace ZEMA
