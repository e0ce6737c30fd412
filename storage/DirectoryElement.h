// What directories and files have in common: a name and the directory they stand in.
#pragma once

#include "core/Object.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "storage/ElementAttributes.h"

namespace ZEMA {

class Directory;

// Keeps its parent, and so the whole chain up to the root and any archive in between, alive.
//
// Threads: name and parent are guarded by StorageMutex.
class DirectoryElement : public Object {
public:
    const String& Name() const { return name_; }         // empty for the root
    Directory* Parent() const { return parent_.Get(); }  // null for the root and for a detached element

    // The last reference goes under StorageMutex, so that a path that is being followed never finds a dying element.
    void Release() override;

    // The base answers false.
    virtual bool SetFlags(const ElementFlags* flags);

protected:
    DirectoryElement(const String& name, Directory* parent);
    ~DirectoryElement() override;

private:
    String name_;
    RefPointer<Directory> parent_;
};

// The name, or with `full` the path from the root: no slash in front, and the root itself is the empty text.
String GetFullPath(const DirectoryElement& element, bool full);

RefPointer<Directory> GetParent(const DirectoryElement& element);

}  // namespace ZEMA
