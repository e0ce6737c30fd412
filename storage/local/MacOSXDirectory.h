// A directory of the local file system.
#pragma once

#include <cstdint>

#include "platform/Foundation/CFPointer.h"
#include "storage/Directory.h"
#include "storage/ElementFacts.h"
#include "storage/local/OpenPathRegistry.h"

namespace ZEMA {

// Maps its children one to one onto the file system: a child's native path is this directory's, "/", and its name. Name
// look-up there follows the file system's own rules for case. An empty name is this directory itself.
//
// An object stands for a path, not for what lies there: making one does not touch the disk, and renaming an open
// directory leaves its object at the old path.
class MacOSXDirectory : public Directory, public ElementFacts {
public:
    MacOSXDirectory(const String& name, Directory* parent, CFStringRef nativePath);

    CFStringRef NativePath() const { return path_.NativePath(); }

    bool SetFlags(const ElementFlags* flags) override;
    ElementFlags GetFlags() override;
    bool SetTimes(const ElementTimes* times) override;  // ignores the time of access
    ElementTimes GetTimes() override;

    // For an empty name this directory, so that a doubled slash in a path leads nowhere else.
    Directory* CreateChildObject(const String& name) override;
    bool CreateDirectory(const String& name) override;

    // With `create`, what exists but cannot be opened in that style is replaced by an empty file, unless it is a
    // directory or a special file.
    File* OpenFile(const String& name, const AccessStyle* style, bool create, const std::uint64_t* truncateTo) override;

    // Refused while an object is open at the child's path. With `force`, the directories in it are made writable for
    // their owner first, and what has no flags, as a link without a target, is refused. Links go without their targets.
    bool Remove(const String& name, bool force) override;
    bool Rename(const String& oldName, const String& newName) override;  // refused when the new name is taken

    bool GetChildFlags(const String& name, ElementFlags* flags) override;
    bool SetChildFlags(const String& name, const ElementFlags* flags) override;
    bool GetChildTimes(const String& name, ElementTimes* times) override;
    bool SetChildTimes(const String& name, const ElementTimes* times) override;

    // True only when the contents cannot be read: users of the tree rely on just that.
    bool IsEmpty() override;
    bool HasDirectoryPath(const BasicArray<String>& components) override;
    bool HasFile(const String& name) override;
    // False when the contents cannot be read, and for an empty directory.
    bool List(const String& pattern, Listing* listing) override;

    bool GetIdentity(const String& name, ElementIdentity* identity) override;
    bool GetEnclosing(BasicArray<ElementIdentity>* enclosing) override;
    // False for a folder with a name in it, however deep, that is no text or differs from another one only in case.
    bool ShowsAllOf(const String& name) override;

protected:
    ~MacOSXDirectory() override;

private:
    Foundation::CFPointer<CFStringRef> ChildPath(const String& name) const;

    OpenPathRegistry::Entry path_;
};

}  // namespace ZEMA
