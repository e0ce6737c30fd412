// Unicode text. Lengths, positions and ranges count UTF-16 units; unpaired surrogates are ordinary units.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFArrayRef = const struct __CFArray*;
using CFCharacterSetRef = const struct __CFCharacterSet*;

using CFStringEncoding = UInt32;
// The encodings that are known; for any other, nothing can be decoded or encoded.
enum : CFStringEncoding {
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingInvalidId = 0xFFFFFFFF,
};

using CFStringCompareFlags = CFOptionFlags;
// No flag, or this one.
enum : CFStringCompareFlags { kCFCompareCaseInsensitive = 1 };

CF_EXPORT CFTypeID CFStringGetTypeID();

// A constant text from a literal in UTF-8. It is kept by this library under its value and never freed, so that it may
// outlive the code that names it. One place in the code looks it up once.
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char* text);
#define CFSTR(literal)                                                                    \
    ([]() -> CFStringRef {                                                                \
        static const CFStringRef literalConstant = __CFStringMakeConstantString(literal); \
        return literalConstant;                                                           \
    }())

// --- Creating ---

// Null when the bytes are not text of that encoding or the encoding is unknown. In ASCII every byte becomes the code
// point of the same value, those of 128 and more too. UTF-8 is strict, and one byte-order mark in front is dropped.
// UTF-16 takes all units as they are; an odd byte at the end is dropped, a single byte fails.
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex byteCount,
                                              CFStringEncoding encoding, Boolean isExternalRepresentation);
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* bytes, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count);

// The same object with one more reference when it cannot change, else a copy that cannot.
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef text);
CF_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef text, CFRange range);

// `maximumLength` is not looked at; the framework's 0 (no limit) is the one value in use.
CF_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator, CFIndex maximumLength);
CF_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maximumLength,
                                                       CFStringRef text);

// --- Changing ---

CF_EXPORT void CFStringAppend(CFMutableStringRef text, CFStringRef appended);

// Decodes as CFStringCreateWithBytes does; bytes that cannot be decoded append nothing.
CF_EXPORT void CFStringAppendCString(CFMutableStringRef text, const char* bytes, CFStringEncoding encoding);

// The one format is "%u": an unsigned number of 32 bits in decimal.
CF_EXPORT void CFStringAppendFormat(CFMutableStringRef text, CFDictionaryRef options, CFStringRef format, ...);
CF_EXPORT void CFStringDelete(CFMutableStringRef text, CFRange range);

// --- Looking at units ---

CF_EXPORT CFIndex CFStringGetLength(CFStringRef text);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef text, CFIndex index);
CF_EXPORT void CFStringGetCharacters(CFStringRef text, CFRange range, UniChar* buffer);

// --- Comparing and searching ---

// Without options: unit by unit, as unsigned numbers. With kCFCompareCaseInsensitive: by the code points of the full
// case folding of characters up to U+FFFF; no locale, no canonical equivalence.
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef text1, CFStringRef text2, CFStringCompareFlags options);

// The range of the first text against the whole of the second.
CF_EXPORT CFComparisonResult CFStringCompareWithOptions(CFStringRef text1, CFStringRef text2, CFRange range1,
                                                        CFStringCompareFlags options);

// Finds the first match inside the range; an empty needle is never found. The length found can differ from the
// needle's when case is ignored. `result` may be null, and stays as it is when nothing is found.
CF_EXPORT Boolean CFStringFindWithOptions(CFStringRef text, CFStringRef needle, CFRange range,
                                          CFStringCompareFlags options, CFRange* result);
CF_EXPORT Boolean CFStringFindCharacterFromSet(CFStringRef text, CFCharacterSetRef set, CFRange range,
                                               CFStringCompareFlags options, CFRange* result);

// n separators give n + 1 pieces, empty ones included.
CF_EXPORT CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef allocator, CFStringRef text,
                                                            CFStringRef separator);

// --- To bytes ---

// False when the bytes and a terminating zero do not fit or a unit cannot be written; the buffer then starts with 0.
CF_EXPORT Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);

// Writes as many units of the range as fit and can be written, and returns their number. A null buffer only counts.
// `lossByte`, if not 0, stands for what ASCII cannot hold.
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                                   Boolean isExternalRepresentation, UInt8* buffer, CFIndex bufferSize,
                                   CFIndex* usedSize);

CF_EXTERN_C_END
