#include "storage/local/MacOSXStorageFactory.h"

#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"
#include "storage/local/MacOSXDirectory.h"
#include "storage/local/OpenPathRegistry.h"

namespace ZEMA {

MacOSXStorageFactory::~MacOSXStorageFactory() = default;

Object* MacOSXStorageFactory::Create(ObjectFactoryArgs*) {
    return nullptr;
}

bool MacOSXStorageFactory::Attach() {
    const String name("file");
    const StorageLock lock;
    const RefPointer<Directory> root = GetRootDirectory();
    if (!root || OpenDirectory(*root, name, false)) return false;
    // Only now: paths that are open below a volume that stays must go on counting.
    OpenPathRegistry::Clear();
    mount_ = New<MacOSXDirectory>(name, root.Get(), CFSTR("/"));
    return true;
}

void MacOSXStorageFactory::Detach() {
    mount_.Reset();
}

}  // namespace ZEMA
