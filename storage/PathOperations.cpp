#include "storage/PathOperations.h"

#include "registry/ObjectRegistry.h"
#include "storage/Resolution.h"
#include "storage/RootDirectory.h"
#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

BasicArray<String> ComponentsOf(const String& path) {
    BasicArray<String> components;
    SplitPath(path, components);
    return components;
}

// Splits off the last component and opens the rest. Null when there is none, when it is "..", or when the rest leads
// nowhere; `last` is set in the first case alone.
RefPointer<Directory> OpenParent(Directory& directory, BasicArray<String> components, bool create, String& last) {
    NormalizeComponents(components);
    if (components.Empty() || IsParentName(components.Back())) return nullptr;
    last = components.Back();
    components.PopBack();
    return OpenDirectory(directory, components, create);
}

void ListOpenChildren(const Directory& directory, const String& pattern, Listing& listing) {
    for (const auto& [name, entry] : directory.GetOpenChildren()) {
        const RefPointer<Directory> child(entry);
        if (!child || !MatchPattern(child->Name(), pattern)) continue;
        listing.Insert({child->Name(), child->GetFlags(), child->GetTimes(), 0});
    }
}

}  // namespace

RefPointer<Directory> GetRootDirectory() {
    const StorageLock lock;
    RootDirectoryInstantiator instantiator;
    const RefPointer<Object> root = ObjectRegistry::Instance()->GetOrCreate(kRootDirectoryKey, instantiator);
    return dynamic_cast<Directory*>(root.Get());
}

RefPointer<Directory> OpenDirectory(Directory& directory, const String& path, bool create) {
    return OpenDirectory(directory, ComponentsOf(path), create);
}

bool DirectoryExists(Directory& directory, const String& path) {
    return DirectoryExists(directory, ComponentsOf(path));
}

bool DirectoryExists(Directory& directory, const BasicArray<String>& components) {
    const StorageLock lock;
    return OpenDirectory(directory, components, false) != nullptr;
}

RefPointer<File> OpenFile(Directory& directory, const String& path, const AccessStyle* style, bool create,
                          const std::uint64_t* truncateTo) {
    return OpenFile(directory, ComponentsOf(path), style, create, truncateTo);
}

RefPointer<File> OpenFile(Directory& directory, const BasicArray<String>& components, const AccessStyle* style,
                          bool create, const std::uint64_t* truncateTo) {
    if (truncateTo != nullptr && !style->write) return nullptr;  // before a directory on the way is made for it
    const StorageLock lock;
    String name;
    const RefPointer<Directory> parent = OpenParent(directory, components, create, name);
    if (!parent) return nullptr;
    RefPointer<File> file(parent->OpenFile(name, style, create, truncateTo));
    if (file && create) Resolution::NoteCreated();  // it may become an archive that a factory was asked for before
    return file;
}

bool IsFile(Directory& directory, const String& path) {
    return IsFile(directory, ComponentsOf(path));
}

bool IsFile(Directory& directory, const BasicArray<String>& components) {
    const StorageLock lock;
    String name;
    const RefPointer<Directory> parent = OpenParent(directory, components, false, name);
    return parent && parent->HasFile(name);
}

bool GetChildFlags(Directory& directory, const String& path, ElementFlags* flags) {
    return GetChildFlags(directory, ComponentsOf(path), flags);
}

bool GetChildFlags(Directory& directory, const BasicArray<String>& components, ElementFlags* flags) {
    const StorageLock lock;
    String name;
    const RefPointer<Directory> parent = OpenParent(directory, components, false, name);
    return parent && parent->GetChildFlags(name, flags);
}

bool SetChildFlags(Directory& directory, const String& path, const ElementFlags* flags) {
    return SetChildFlags(directory, ComponentsOf(path), flags);
}

bool SetChildFlags(Directory& directory, const BasicArray<String>& components, const ElementFlags* flags) {
    const StorageLock lock;
    String name;
    const RefPointer<Directory> parent = OpenParent(directory, components, false, name);
    return parent && parent->SetChildFlags(name, flags);
}

bool List(Directory& directory, const String& patternPath, Listing* listing) {
    return List(directory, ComponentsOf(patternPath), listing);
}

bool List(Directory& directory, const BasicArray<String>& components, Listing* listing) {
    const StorageLock lock;
    String pattern;
    const RefPointer<Directory> parent = OpenParent(directory, components, false, pattern);
    if (!parent) return false;
    ListOpenChildren(*parent, pattern, *listing);
    return parent->List(pattern, listing);
}

}  // namespace ZEMA
