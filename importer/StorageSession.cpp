#include "importer/StorageSession.h"

#include "registry/ObjectFactory.h"
#include "registry/ObjectRegistry.h"
#include "storage/Directory.h"
#include "storage/local/MacOSXDirectory.h"
#include "storage/local/MacOSXStorageFactory.h"
#include "storage/zip/ZipStorageDirectory.h"
#include "storage/zip/ZipStorageFactory.h"

namespace ZEMA {

namespace {

std::mutex oneSession;

// The local factory comes first: attaching it mounts the file system, without which there is nothing to look for
// archives in.
bool RegisterBackEnds(StorageSession::Purpose purpose) {
    const RefPointer<ObjectFactory> factory = ObjectFactory::Instance();
    const bool onlyReads = purpose == StorageSession::Purpose::Reading;
    return factory &&
           factory->Register(&typeid(MacOSXDirectory), New<MacOSXStorageFactory>().Get(), &typeid(Directory)) &&
           factory->Register(&typeid(ZipStorageDirectory), New<ZipStorageFactory>(onlyReads).Get(), &typeid(Directory));
}

}  // namespace

StorageSession::StorageSession(Purpose purpose) : lock_(oneSession), ready_(RegisterBackEnds(purpose)) {}

StorageSession::RegistryEmptier::~RegistryEmptier() {
    ObjectRegistry::Instance()->RemoveAll();
}

}  // namespace ZEMA
