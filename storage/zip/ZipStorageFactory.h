// Mounts archives where a path runs into one.
#pragma once

#include "registry/SpecificObjectFactory.h"

namespace ZEMA {

// Registered for ZipStorageDirectory under Directory. Asked before the local file system, since it answers only for
// what it recognises: an archive, by its contents and whatever its name is.
class ZipStorageFactory : public SpecificObjectFactory {
public:
    // A factory that only reads opens no archive for changes, and makes none.
    explicit ZipStorageFactory(bool onlyReads = false);

    // For Directory::OpenArgs the root directory of the archive that the path names, which is entered in the directory
    // around it; null when there is no archive, or one that cannot be mounted. A path without a file is tried once more
    // with ".zip" behind it, and a name that ends in ".zip" is also known without.
    Object* Create(ObjectFactoryArgs* args) override;

    bool Attach() override;
    void Detach() override;

protected:
    ~ZipStorageFactory() override;

private:
    const bool onlyReads_;
};

}  // namespace ZEMA
