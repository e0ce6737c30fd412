// What a metadata importer needs of CoreServices, under the framework's own names: the plug-in type and interface of
// importers, and the keys of metadata attributes.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// 8B08C4BF-415B-11D8-B3F9-0003936726FC
#define kMDImporterTypeID                                                                                           \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)

// 6EBC27C4-899C-11D8-84AE-0003936726FC
#define kMDImporterInterfaceID                                                                                      \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE, \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)

// An instance is the address of a pointer to such a table.
struct MDImporterInterfaceStruct {
    IUNKNOWN_C_GUTS;
    Boolean (*ImporterImportData)(void* thisInterface, CFMutableDictionaryRef attributes, CFStringRef contentTypeUTI,
                                  CFStringRef pathToFile);
};

// The text of each key is its own name.
CF_EXTERN_C_BEGIN

CF_EXPORT const CFStringRef kMDItemAuthors;
CF_EXPORT const CFStringRef kMDItemCreator;
CF_EXPORT const CFStringRef kMDItemDescription;
CF_EXPORT const CFStringRef kMDItemKeywords;
CF_EXPORT const CFStringRef kMDItemVersion;

CF_EXTERN_C_END
