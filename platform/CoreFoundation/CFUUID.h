// Universally unique identifiers.
//
// Of equal identifiers there is one object while anyone holds it. All calls are safe on any thread.
#pragma once

#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

using CFUUIDRef = const struct __CFUUID*;

// The bytes in the order in which they are written, whatever the byte order of the machine.
struct CFUUIDBytes {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
};

CF_EXPORT CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes bytes);

// Lenient as the framework is: digits of either case, any one unit between the groups, anything in front and behind;
// what is missing or not hexadecimal is zero. Null only for the empty text.
CF_EXPORT CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef allocator, CFStringRef text);
CF_EXPORT CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

// Never freed; the caller owns no reference.
CF_EXPORT CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                                   UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7,
                                                   UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12,
                                                   UInt8 byte13, UInt8 byte14, UInt8 byte15);

CF_EXTERN_C_END
