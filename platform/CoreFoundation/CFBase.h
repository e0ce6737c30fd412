// The ground types of CoreFoundation and what every object can do.
//
// Ownership: a result of a call with "Create" or "Copy" in its name carries one reference of the caller's; a result of
//            "Get" and the elements of collections carry none.
// Errors:    a missing object (null) where one is needed and a range out of bounds are mistakes of the caller.
//            When memory runs out, std::bad_alloc is thrown (the framework ends the process).
// Threads:   reference counts are atomic; an object that does not change may be used by all threads at once.
#pragma once

#include <cstdint>

#define CF_EXPORT __attribute__((visibility("default"))) extern
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }

CF_EXTERN_C_BEGIN

using Boolean = unsigned char;
using UInt8 = std::uint8_t;
using SInt8 = std::int8_t;
using UInt16 = std::uint16_t;
using SInt16 = std::int16_t;
using UInt32 = std::uint32_t;
using SInt32 = std::int32_t;
using UInt64 = std::uint64_t;
using SInt64 = std::int64_t;
using Float32 = float;
using Float64 = double;
using UniChar = UInt16;  // one UTF-16 unit

using CFIndex = long;
using CFTypeID = unsigned long;
using CFHashCode = unsigned long;
using CFOptionFlags = unsigned long;
using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFMutableStringRef = struct __CFString*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;

// Accepted everywhere and never looked at: all memory comes from operator new.
using CFAllocatorRef = const struct __CFAllocator*;
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;
inline constexpr CFAllocatorRef kCFAllocatorSystemDefault = nullptr;

// `length` things from `location` on; for texts these are units.
struct CFRange {
    CFIndex location;
    CFIndex length;
};

inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    return {location, length};
}

inline constexpr CFIndex kCFNotFound = -1;

// How the first of two compares to the second.
enum CFComparisonResult : CFIndex { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };

// A null object ends the process in these calls. Constants (the empty string, CFSTR texts, the booleans) have a fixed
// huge count that retaining and releasing leave alone.
CF_EXPORT CFTypeRef CFRetain(CFTypeRef object);
CF_EXPORT void CFRelease(CFTypeRef object);
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef object);

CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef object);

// By value; objects of different types are never equal. Equal objects have equal hashes, and hashes differ from one
// run of the program to the next.
CF_EXPORT Boolean CFEqual(CFTypeRef object1, CFTypeRef object2);
CF_EXPORT CFHashCode CFHash(CFTypeRef object);

CF_EXTERN_C_END
