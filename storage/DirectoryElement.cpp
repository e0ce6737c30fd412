#include "storage/DirectoryElement.h"

#include "storage/Directory.h"
#include "storage/StorageMutex.h"

namespace ZEMA {

DirectoryElement::DirectoryElement(const String& name, Directory* parent) : name_(name), parent_(parent) {}

// A parent that only this element keeps alive goes with it, and that parent's parent with it in turn. Each is let go of
// here, from below, while the next one up is held once more: left to the members' destructors, a chain of directories
// as deep as an archive likes would go one call inside another.
DirectoryElement::~DirectoryElement() {
    const StorageLock lock;
    RefPointer<Directory> last = std::move(parent_);
    while (last && last->ReferenceCount() == 1) {
        RefPointer<Directory> next = last->parent_;
        last = std::move(next);
    }
}

void DirectoryElement::Release() {
    const StorageLock lock;
    Object::Release();
}

bool DirectoryElement::SetFlags(const ElementFlags*) {
    return false;
}

String GetFullPath(const DirectoryElement& element, bool full) {
    const StorageLock lock;
    if (!full) return element.Name();
    BasicArray<const DirectoryElement*> chain;  // each keeps the one behind it alive
    for (const DirectoryElement* next = &element; next != nullptr; next = next->Parent()) chain.PushBack(next);
    String path;
    for (std::size_t index = chain.Size(); index-- > 0;) {
        if (!path.IsEmpty()) path.Append("/");
        path.Append(chain[index]->Name());
    }
    return path;
}

RefPointer<Directory> GetParent(const DirectoryElement& element) {
    const StorageLock lock;
    return element.Parent();
}

}  // namespace ZEMA
