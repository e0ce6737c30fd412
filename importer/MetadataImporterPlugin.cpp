// The thin layer between the plug-in host and the importer: instances, their counts and the table they share.

#include "importer/MetadataImporterPlugin.h"

#include <CoreServices/CoreServices.h>

#include <cstdlib>
#include <memory>

#include "platform/Foundation/CFPointer.h"

namespace {

using Foundation::CFPointer;

// The host knows an instance by the address of its first field.
struct Instance {
    const MDImporterInterfaceStruct* interface;
    CFUUIDRef factoryID;  // one reference of its own
    UInt32 referenceCount;
};

const MDImporterInterfaceStruct interfaceTable = {
    nullptr,
    MetadataImporterQueryInterface,
    MetadataImporterPluginAddRef,
    MetadataImporterPluginRelease,
    GetMetadataForFile,
};

// Instances come from malloc, so that running out of memory is no exception in a function that C calls.
struct FreeInstance {
    void operator()(Instance* instance) const { std::free(instance); }
};

Instance* NewInstance() {
    CFPointer<CFUUIDRef> factoryID(
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR(ZEMA_METADATA_IMPORTER_FACTORY_ID)));
    std::unique_ptr<Instance, FreeInstance> instance(static_cast<Instance*>(std::malloc(sizeof(Instance))));
    if (!instance) return nullptr;
    CFPlugInAddInstanceForFactory(factoryID.Get());
    instance->interface = &interfaceTable;
    instance->factoryID = factoryID.Take();
    instance->referenceCount = 1;
    return instance.release();
}

bool IsKnownInterface(REFIID interfaceID) {
    const CFPointer<CFUUIDRef> asked(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, interfaceID));
    return CFEqual(asked.Get(), kMDImporterInterfaceID) || CFEqual(asked.Get(), IUnknownUUID);
}

}  // namespace

void* MetadataImporterPluginFactory(CFAllocatorRef, CFUUIDRef typeID) {
    try {
        return typeID != nullptr && CFEqual(typeID, kMDImporterTypeID) ? NewInstance() : nullptr;
    } catch (...) {
        return nullptr;
    }
}

HRESULT MetadataImporterQueryInterface(void* instance, REFIID interfaceID, LPVOID* result) {
    *result = nullptr;
    try {
        if (!IsKnownInterface(interfaceID)) return E_NOINTERFACE;
    } catch (...) {
        return E_NOINTERFACE;
    }
    static_cast<Instance*>(instance)->interface->AddRef(instance);
    *result = instance;
    return S_OK;
}

ULONG MetadataImporterPluginAddRef(void* instance) {
    return ++static_cast<Instance*>(instance)->referenceCount;
}

ULONG MetadataImporterPluginRelease(void* instance) {
    auto* const record = static_cast<Instance*>(instance);
    if (--record->referenceCount != 0) return record->referenceCount;
    const CFUUIDRef factoryID = record->factoryID;
    std::free(record);
    if (factoryID != nullptr) {
        CFPlugInRemoveInstanceForFactory(factoryID);
        CFRelease(factoryID);
    }
    return 0;
}
