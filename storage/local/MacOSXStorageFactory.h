// Puts the local file system into the storage tree.
#pragma once

#include "core/RefPointer.h"
#include "registry/SpecificObjectFactory.h"
#include "storage/Directory.h"

namespace ZEMA {

// Mounts the file system's root as the volume "file" for as long as it is attached: the native path /Users/a is the
// storage path file/Users/a. Registered for MacOSXDirectory under Directory.
//
// Ownership: holds the volume, which holds the root of the tree.
class MacOSXStorageFactory : public SpecificObjectFactory {
public:
    MacOSXStorageFactory() = default;

    // Null: following a path never mounts the local file system.
    Object* Create(ObjectFactoryArgs* args) override;

    // False, and nothing changed, while a volume "file" is alive. Starts with no path counted as open.
    bool Attach() override;
    void Detach() override;

protected:
    ~MacOSXStorageFactory() override;

private:
    RefPointer<Directory> mount_;
};

}  // namespace ZEMA
