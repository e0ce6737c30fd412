// The one operation through which the indexing service uses the plug-in.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

CF_EXTERN_C_BEGIN

// Imports the document at `path`: true when its model was loaded and its attributes were entered in `attributes`. On
// false, nothing was entered. The instance and the type identifier are not looked at: what a document is, its contents
// tell. No exception leaves it.
//
// Threads: calls wait for each other.
CF_EXPORT Boolean GetMetadataForFile(void* instance, CFMutableDictionaryRef attributes, CFStringRef contentTypeUTI,
                                     CFStringRef path);

CF_EXTERN_C_END
