// The root of the storage tree.
#pragma once

#include "registry/ObjectRegistry.h"
#include "storage/Directory.h"

namespace ZEMA {

inline constexpr unsigned long kRootDirectoryKey = 0x53544F52;  // 'STOR', in the object registry

// Has no name and no storage: its only content is the volumes among its open children, so nothing can be made, opened,
// renamed or removed in it.
class RootDirectory : public Directory {
public:
    RootDirectory();

    bool Rename(const String& oldName, const String& newName) override;

    // Volumes cannot be made or taken away through the root.
    virtual bool CreateVolume(const String& name);
    virtual Directory* OpenVolume(const String& name);

    // The text before the first "/" names a volume, the rest is followed below it.
    virtual RefPointer<Directory> OpenPath(const String& path, bool create);

protected:
    ~RootDirectory() override;
};

// Makes the root for the object registry.
class RootDirectoryInstantiator : public ObjectRegistryInstantiator {
public:
    RefPointer<Object> Instantiate() override;
};

}  // namespace ZEMA
