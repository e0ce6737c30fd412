// Numbers and truth values as objects. Numbers are equal by value, whatever their types: 5 equals 5.0.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFBooleanRef = const struct __CFBoolean*;
using CFNumberRef = const struct __CFNumber*;

CF_EXPORT const CFBooleanRef kCFBooleanTrue;
CF_EXPORT const CFBooleanRef kCFBooleanFalse;
CF_EXPORT CFTypeID CFBooleanGetTypeID();
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

// There are no unsigned types: an unsigned 32-bit number is made from a signed 64-bit one.
enum CFNumberType : CFIndex {
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
};

CF_EXPORT CFTypeID CFNumberGetTypeID();
CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
CF_EXPORT Boolean CFNumberIsFloatType(CFNumberRef number);

// False when the number does not fit the type without loss; what fits of it is written all the same.
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_EXTERN_C_END
