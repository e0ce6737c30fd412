#include "storage/RootDirectory.h"

#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"

namespace ZEMA {

RootDirectory::RootDirectory() : Directory(String(), nullptr) {}
RootDirectory::~RootDirectory() = default;

bool RootDirectory::Rename(const String&, const String&) {
    return false;
}

bool RootDirectory::CreateVolume(const String&) {
    return false;
}

Directory* RootDirectory::OpenVolume(const String&) {
    return nullptr;
}

// Volumes are open children that attached themselves; none is ever made or opened by its name alone.
RefPointer<Directory> RootDirectory::OpenPath(const String& path, bool create) {
    const StorageLock lock;
    const std::uint32_t slash = path.Find('/');
    const auto position = GetOpenChildren().Find(String(path, 0, slash));
    if (position == GetOpenChildren().end()) return nullptr;
    const RefPointer<Directory> volume(position->second);
    if (slash == npos || !volume) return volume;
    return OpenDirectory(*volume, String(path, slash + 1, npos), create);
}

RefPointer<Object> RootDirectoryInstantiator::Instantiate() {
    return New<RootDirectory>();
}

}  // namespace ZEMA
