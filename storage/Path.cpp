#include "storage/Path.h"

#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"

namespace ZEMA {

Path::Path(const Directory::OpenArgs& asked) : name_(asked.components.Back()), parent_(OpenAskedParent(asked)) {}

Path::~Path() = default;

void Path::Set(const DirectoryElement& element) {
    const StorageLock lock;
    name_ = element.Name();
    parent_.Reset(element.Parent());
}

void Path::Append(const String& path) {
    BasicArray<String> components;
    SplitPath(path, components);
    Append(components);
}

void Path::Append(const BasicArray<String>& components) {
    const StorageLock lock;
    BasicArray<String> all;
    all.Reserve(components.Size() + 1);
    if (!name_.IsEmpty()) all.PushBack(name_);
    for (const String& component : components) all.PushBack(component);
    NormalizeComponents(all);

    String name;
    const bool climbs = !all.Empty() && IsParentName(all.Back());
    if (!all.Empty() && !climbs) {
        name = all.Back();
        all.PopBack();
    }
    RefPointer<Directory> reached = parent_ ? parent_ : GetRootDirectory();
    if (reached && !all.Empty()) reached = ZEMA::OpenDirectory(*reached, all, false);
    // What ends in ".." has no name of its own: the directory it climbs to gives its own, and the root has none.
    if (climbs && reached && reached->Parent() != nullptr) {
        name = reached->Name();
        reached = GetParent(*reached);
    }
    name_ = name;
    parent_ = reached;
}

RefPointer<Directory> Path::OpenDirectory(bool create) const {
    return parent_ ? ZEMA::OpenDirectory(*parent_, name_, create) : nullptr;
}

RefPointer<File> Path::OpenFile(const AccessStyle* style, bool create) const {
    return parent_ ? ZEMA::OpenFile(*parent_, name_, style, create, nullptr) : nullptr;
}

bool Path::IsFile() const {
    return parent_ && ZEMA::IsFile(*parent_, name_);
}

}  // namespace ZEMA
