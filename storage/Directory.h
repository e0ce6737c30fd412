// A directory of the storage tree.
#pragma once

#include <cstdint>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "registry/ObjectFactoryArgs.h"
#include "storage/DirectoryElement.h"
#include "storage/File.h"

namespace ZEMA {

// Lists, makes, opens, copies, moves and removes its children by name. Back ends override what their storage can do;
// the base gives the cautious answers named below.
//
// A directory enters itself in its parent's map of open children when it is made and leaves it with its last reference.
// The map holds no references: it makes following a path again cheap and keeps a mounted archive reachable for as long
// as somebody holds it.
//
// Threads: the virtual operations are called with StorageMutex held, which also guards the map, the aliases and the
// iteration. Users go through storage/PathOperations.h, which takes it.
class Directory : public DirectoryElement {
public:
    using OpenChildren = BasicMap<String, Directory*, StringCaseInsensitiveLess<String>>;

    struct OpenArgs;

    Directory(const String& name, Directory* parent);

    void OnLastRelease() override;

    // Attributes. The base answers "directory, readable", false, and unknown times; SetAttributes is as for files.
    virtual ElementFlags GetFlags();
    virtual bool SetTimes(const ElementTimes* times);
    virtual ElementTimes GetTimes();
    virtual bool SetAttributes(const ElementFlags* flags, const ElementTimes* times);

    // Making and opening. CreateChildObject gives a new object of count 0 for a child directory that exists, without
    // looking at the storage; OpenFile gives a new object of count 0 and cuts the file to `truncateTo` where that is
    // not null. The base answers null and false.
    virtual Directory* CreateChildObject(const String& name);
    virtual bool CreateDirectory(const String& name);
    virtual File* OpenFile(const String& name, const AccessStyle* style, bool create, const std::uint64_t* truncateTo);

    // Changing the tree. `force` lifts protections first. The base cannot remove; it renames by Move, moves by Copy and
    // then Remove with force, and copies file by file and directory by directory. Nothing copied is taken back after a
    // failure. Nothing is copied onto itself, nor a directory into itself, also where a link leads there: both fail, or
    // Move would remove the only copy. For the same reason Move fails where the copy would leave something out that the
    // removal takes. Storages tell more than paths do (storage/ElementFacts.h); where they do not, paths are compared
    // without regard to case. A listed entry whose name is no plain component, as "..", fails the copy too: followed as
    // a path it would lead elsewhere.
    virtual bool Remove(const String& name, bool force);
    virtual bool Rename(const String& oldName, const String& newName);
    virtual bool Move(const String& name, Directory* target, const String& newName, bool overwrite, bool force);
    virtual bool Copy(const String& name, Directory* target, const String& newName, bool overwrite, bool force);

    // Attributes of children. The base answers false.
    virtual bool GetChildFlags(const String& name, ElementFlags* flags);
    virtual bool SetChildFlags(const String& name, const ElementFlags* flags);
    virtual bool GetChildTimes(const String& name, ElementTimes* times);
    virtual bool SetChildTimes(const String& name, const ElementTimes* times);

    // What is there. HasDirectoryPath is true when the components, one below the other, are existing directories of
    // this storage itself; List adds an entry for every child that matches the pattern (see MatchPattern). The base
    // answers true, false, false, and lists nothing.
    virtual bool IsEmpty();
    virtual bool HasDirectoryPath(const BasicArray<String>& components);
    virtual bool HasFile(const String& name);
    virtual bool List(const String& pattern, Listing* listing);

    // One walk over the files of the directory: FindFirstFile takes the listing, open children included, and stands on
    // the first file; entries that are directories are passed over. EndFind ends the walk.
    virtual void FindFirstFile();
    virtual RefPointer<File> OpenFoundFile(const AccessStyle* style, const std::uint64_t* truncateTo);
    virtual void FindNextFile();
    virtual bool IsFindDone();
    virtual bool IsFindActive();
    virtual void EndFind();

    // The live child directories by name, ignoring case; guarded by StorageMutex.
    const OpenChildren& GetOpenChildren() const { return openChildren_; }

protected:
    ~Directory() override;

    // What had this name is gone from the storage: paths must not find it any more, though somebody may hold it still.
    void ForgetOpenChild(const String& name);

private:
    friend void AddAlias(Directory& directory, const String& alias);

    void LeaveParent();
    void SkipFoundDirectories();

    OpenChildren openChildren_;  // weak: each child erases itself
    BasicArray<String> aliases_;
    Listing found_;
    Listing::Position foundPosition_;
    bool findActive_ = false;
};

// What a storage factory is asked with when a path cannot be followed: the directory in whose storage it ends, and the
// components that remain, normalised and at least one.
struct Directory::OpenArgs : ObjectFactoryArgs {
    RefPointer<Directory> base;
    BasicArray<String> components;
    bool create = false;
};

// Enters the directory in its parent's open children under a further name, until it goes.
void AddAlias(Directory& directory, const String& alias);

}  // namespace ZEMA
