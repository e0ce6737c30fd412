// The whole road of one document, from its path to its attributes.

#include "importer/MetadataImporterPlugin.h"

#include "importer/AttributeSet.h"
#include "importer/DocumentLoad.h"
#include "importer/StorageSession.h"
#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSAutoreleasePool.h"

namespace ZEMA {

namespace {

// What stands here goes in the opposite order: the registry is emptied, then the scene and the pool are let go.
bool Import(CFStringRef path, CFMutableDictionaryRef attributes) {
    const Foundation::NSAutoreleasePool pool;
    DocumentLoad load;
    const StorageSession storage;
    if (!storage.Ready() || !load.Run(StoragePathOf(path))) return false;

    const Foundation::CFPointer<CFMutableDictionaryRef> written(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    WriteAttributes(load.Scene(), load.MarkupVersion(), written.Get());
    HandOverAttributes(written.Get(), attributes);
    return true;
}

}  // namespace

}  // namespace ZEMA

Boolean GetMetadataForFile(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef path) {
    // The caller is a C program behind a function pointer, and an exception would end it.
    try {
        return attributes != nullptr && path != nullptr && ZEMA::Import(path, attributes);
    } catch (...) {
        return false;
    }
}
