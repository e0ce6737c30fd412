// Ordered lists of pointers. The standard callbacks make them lists of objects, which the list keeps alive.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFArrayRef = const struct __CFArray*;
using CFMutableArrayRef = struct __CFArray*;

using CFArrayRetainCallBack = const void* (*)(CFAllocatorRef allocator, const void* value);
using CFArrayReleaseCallBack = void (*)(CFAllocatorRef allocator, const void* value);
using CFArrayCopyDescriptionCallBack = CFStringRef (*)(const void* value);
using CFArrayEqualCallBack = Boolean (*)(const void* value1, const void* value2);

// A null callback: nothing is kept alive, values are compared by address. Descriptions are never asked for.
struct CFArrayCallBacks {
    CFIndex version;
    CFArrayRetainCallBack retain;
    CFArrayReleaseCallBack release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack equal;
};
CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;

CF_EXPORT CFTypeID CFArrayGetTypeID();

// `callBacks` may be null: a list of plain addresses. The capacity is a hint.
CF_EXPORT CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFArrayCallBacks* callBacks);

CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef array);
CF_EXPORT const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
CF_EXPORT void CFArrayAppendValue(CFMutableArrayRef array, const void* value);

CF_EXTERN_C_END
