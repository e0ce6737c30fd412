// Flags, times and sizes of items of the local file system.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "storage/ElementAttributes.h"

namespace ZEMA {

// The paths are absolute native ones. What kind an item is, is told through links; its attributes are its own.

// Rebuilds the flags from the owner's permissions and keeps bits 6 and 7. False when the item does not exist, the flags
// left alone, or when its attributes cannot be read, the directory bit alone rebuilt.
bool ReadFlags(CFStringRef path, ElementFlags* flags);

// Replaces the owner's permissions; those of group and others stay. "Directory" makes an item executable too, and
// "entries writable" makes a directory writable. Of a link the target is changed.
bool WriteFlags(CFStringRef path, const ElementFlags& flags);

// The time of access reads as that of modification, and is not written. A failed read leaves `times` alone. Doubles
// hold times since 1601 to about two microseconds: whole seconds are exact, finer ticks are rounded.
bool ReadTimes(CFStringRef path, ElementTimes* times);
bool WriteTimes(CFStringRef path, const ElementTimes& times);

// The entry of a listing for the item; what cannot be read is 0.
Descriptor DescribeItem(CFStringRef path, const String& name);

}  // namespace ZEMA
