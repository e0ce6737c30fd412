// Cutting texts into pieces.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFString.h>

#include "platform/CoreFoundation/StringObject.h"

using namespace ZEMA::CF;

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef allocator, CFStringRef text, CFStringRef separator) {
    const CFIndex length = CFStringGetLength(text);
    CFMutableArrayRef pieces = CFArrayCreateMutable(allocator, 0, &kCFTypeArrayCallBacks);
    Owned<__CFArray> owner(pieces);
    const auto append = [&](CFRange range) {
        const Owned<__CFString> piece(CFStringCreateWithSubstring(allocator, text, range));
        CFArrayAppendValue(pieces, piece.get());
    };
    CFIndex start = 0;
    CFRange found;
    while (CFStringFindWithOptions(text, separator, {start, length - start}, 0, &found)) {
        append({start, found.location - start});
        start = found.location + found.length;
    }
    append({start, length - start});
    return owner.release();
}
