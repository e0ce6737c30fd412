// Reading of numbers from text.
#pragma once

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

using CFLocaleRef = const struct __CFLocale*;
using CFNumberFormatterRef = struct __CFNumberFormatter*;

// How numbers would be written; reading does not ask for it.
enum CFNumberFormatterStyle : CFIndex { kCFNumberFormatterNoStyle = 0 };

// A null locale is the root locale, the only one there is here: '.' is the decimal point, digits are 0 to 9.
CF_EXPORT CFNumberFormatterRef CFNumberFormatterCreate(CFAllocatorRef allocator, CFLocaleRef locale,
                                                       CFNumberFormatterStyle style);

// Reads one number at the start of the range (blanks in front are skipped) and sets the range's length to the units
// used, also when it fails: blanks and a lone '-' are then used up. A null range is the whole text.
// '+' in front is refused; exponents, ".5" and "5." are accepted; "-0" is +0. Only kCFNumberFloat32Type is known; a
// number above FLT_MAX fails, one below the smallest normal double too. `value` is written only on success.
CF_EXPORT Boolean CFNumberFormatterGetValueFromString(CFNumberFormatterRef formatter, CFStringRef text, CFRange* range,
                                                      CFNumberType type, void* value);

CF_EXTERN_C_END
