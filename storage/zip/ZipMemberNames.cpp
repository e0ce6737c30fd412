#include "storage/zip/ZipMemberNames.h"

#include <new>
#include <string_view>

#include "core/BasicArray.h"
#include "core/Limits.h"
#include "storage/PathComponents.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

// Whether a text may be a name in the tree. Asked of the text and not of its bytes: a byte-order mark in front of them
// is dropped, and what is left may be "..".
bool IsUsable(const String& text) {
    return IsPlainName(text) && text.Find('\0') == npos;
}

// Whether a path leads to a directory, to none that a member could stand in, or cannot be an archive's.
enum class PathKind { Usable, Unusable, Broken };

// Cuts a path, each part of which is followed by "/", into its parts.
PathKind DecodePath(std::string_view path, BasicArray<String>& parts) {
    PathKind kind = PathKind::Usable;
    bool hasEmptyPart = false;
    while (!path.empty()) {
        const std::string_view part = path.substr(0, path.find('/'));
        path.remove_prefix(part.size() + 1);
        parts.PushBack(FromUtf8(part));
        if (part.empty()) {
            hasEmptyPart = true;
        } else if (parts.Back().IsEmpty()) {
            return PathKind::Unusable;  // no text, so nothing can be said of its parts
        } else if (!IsUsable(parts.Back())) {
            kind = PathKind::Unusable;
        }
    }
    return hasEmptyPart ? PathKind::Broken : kind;
}

}  // namespace

bool ZipNamePlacer::Place(std::string_view name, ZipFileHeader& member) {
    const std::string_view path = name.substr(0, name.rfind('/') + 1);  // npos + 1 is 0
    const std::string_view last = name.substr(path.size());
    const String lastName = FromUtf8(last);
    if (!last.empty() && lastName.IsEmpty()) return true;
    const bool usable = last.empty() ? !path.empty() : IsUsable(lastName);

    if (path != lastPath_.View()) {
        BasicArray<String> parts;
        const PathKind kind = DecodePath(path, parts);
        if (kind == PathKind::Broken) return false;
        if (kind == PathKind::Unusable || !usable) return true;
        ZipTreeNode* folder = &root_;
        for (const String& part : parts) folder = &GetOrAdd(*folder, part, nullptr);
        lastPath_.Assign(path.data(), static_cast<std::uint32_t>(path.size()));
        lastFolder_ = folder;
    }
    if (!usable) return true;
    member.elementFlags.Set(ElementFlags::kDirectory, last.empty());
    if (last.empty()) {
        lastFolder_->SetHeader(&member);
    } else {
        GetOrAdd(*lastFolder_, lastName, &member);
    }
    return true;
}

ZipTreeNode& ZipNamePlacer::GetOrAdd(ZipTreeNode& folder, const String& name, ZipFileHeader* header) {
    const std::size_t before = folder.GetChildren().Size();
    ZipTreeNode& child = GetOrAddChild(folder, name, header);
    nodeCount_ += folder.GetChildren().Size() - before;
    if (nodeCount_ > kMostArchiveNodes) throw std::bad_alloc();
    return child;
}

bool BuildMemberName(const ZipTreeNode& parent, const String& name, bool directory, AString& path) {
    const AString last = name.ToAString();
    if (last.IsEmpty() || !IsUsable(name)) return false;
    BasicArray<const ZipTreeNode*> folders;
    for (const ZipTreeNode* node = &parent; node->Parent() != nullptr; node = node->Parent()) folders.PushBack(node);

    path = AString();
    while (!folders.Empty()) {
        const AString part = folders.Back()->Name().ToAString();
        folders.PopBack();
        path.Append(part);
        path.Append("/", 1);
        if (path.Length() > kMaxNameLength) return false;
    }
    path.Append(last);
    if (directory) path.Append("/", 1);
    return path.Length() <= kMaxNameLength;
}

}  // namespace ZEMA
