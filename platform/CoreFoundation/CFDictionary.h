// Values under keys, hashed. The standard callbacks make keys and values objects, which the dictionary keeps alive;
// keys are then compared by value. Keys are handed out in the order in which they came in.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFDictionaryRetainCallBack = const void* (*)(CFAllocatorRef allocator, const void* value);
using CFDictionaryReleaseCallBack = void (*)(CFAllocatorRef allocator, const void* value);
using CFDictionaryCopyDescriptionCallBack = CFStringRef (*)(const void* value);
using CFDictionaryEqualCallBack = Boolean (*)(const void* value1, const void* value2);
using CFDictionaryHashCallBack = CFHashCode (*)(const void* value);

// What is done with keys. A null callback: nothing is kept alive, compared by address, hashed by address. Descriptions
// are never asked for.
struct CFDictionaryKeyCallBacks {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
    CFDictionaryHashCallBack hash;
};
// The same for values, which are compared only where two dictionaries are.
struct CFDictionaryValueCallBacks {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
};
CF_EXPORT const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CF_EXPORT CFTypeID CFDictionaryGetTypeID();

// Null callbacks stand for plain addresses. The capacity is a hint.
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                           const CFDictionaryKeyCallBacks* keyCallBacks,
                                                           const CFDictionaryValueCallBacks* valueCallBacks);

CF_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);

// Null when the key is absent.
CF_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

// Each array has room for all entries, or is null.
CF_EXPORT void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys, const void** values);

// Adds unless the key is there; then nothing is changed or retained.
CF_EXPORT void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);

// Adds, or puts both the key and the value in place of those that are there.
CF_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);

CF_EXTERN_C_END
