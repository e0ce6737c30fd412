// What the plug-in bundle exports: its factory, the life of its instances, and the one operation that they are for.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// This plug-in's own factory UUID; the bundle's Info.plist declares the factory under it.
#define ZEMA_METADATA_IMPORTER_FACTORY_ID "1A62A22C-F866-420C-AF47-37B71F698B92"

CF_EXTERN_C_BEGIN

// A new instance with a count of 1, registered for this plug-in's factory. Null when `typeID` is not the type of
// metadata importers, or when memory runs out. An instance is the address of a pointer to the interface table.
//
// Threads: the count of an instance is plain arithmetic; its host uses it on one thread at a time.
CF_EXPORT void* MetadataImporterPluginFactory(CFAllocatorRef allocator, CFUUIDRef typeID);

// Adds a reference and gives the instance for the importer interface and the base interface; E_NOINTERFACE and null for
// any other.
CF_EXPORT HRESULT MetadataImporterQueryInterface(void* instance, REFIID interfaceID, LPVOID* result);

// Each returns the new count. The release that ends the instance unregisters it.
CF_EXPORT ULONG MetadataImporterPluginAddRef(void* instance);
CF_EXPORT ULONG MetadataImporterPluginRelease(void* instance);

// Imports the document at `path`: true when its model was loaded and its attributes were entered in `attributes`, which
// comes empty. On false, nothing was entered. The instance and the type identifier are not looked at: what a document
// is, its contents tell. No exception leaves it.
//
// Threads: calls wait for each other.
CF_EXPORT Boolean GetMetadataForFile(void* instance, CFMutableDictionaryRef attributes, CFStringRef contentTypeUTI,
                                     CFStringRef path);

CF_EXTERN_C_END
