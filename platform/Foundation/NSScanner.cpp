#include "platform/Foundation/NSScanner.h"

namespace Foundation {
namespace {

constexpr NSCharacterSet kWhitespaceAndNewline(
    u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u200B\u2028\u2029"
    u"\u202F\u205F\u3000");

}  // namespace

const NSCharacterSet& NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    return kWhitespaceAndNewline;
}

NSScanner::NSScanner(CFStringRef string)
    : string_(CFPointer<CFStringRef>::Retain(string)),
      length_(CFStringGetLength(string)),
      skipped_(&kWhitespaceAndNewline) {}

bool NSScanner::scanCharactersFromSet(const NSCharacterSet& set, CFRange* run) {
    const CFIndex start = skipped_ == nullptr ? location_ : EndOfRun(location_, *skipped_);
    const CFIndex end = EndOfRun(start, set);
    if (end == start) return false;
    *run = CFRangeMake(start, end - start);
    location_ = end;
    return true;
}

bool NSScanner::scanCharactersFromSet(const NSCharacterSet& set, CFPointer<CFStringRef>* intoString) {
    CFRange run;
    if (!scanCharactersFromSet(set, &run)) return false;
    if (intoString != nullptr) {
        *intoString = CFPointer<CFStringRef>(CFStringCreateWithSubstring(kCFAllocatorDefault, string_.Get(), run));
    }
    return true;
}

CFIndex NSScanner::EndOfRun(CFIndex start, const NSCharacterSet& set) const {
    CFIndex end = start;
    while (end < length_ && set.characterIsMember(CFStringGetCharacterAtIndex(string_.Get(), end))) ++end;
    return end;
}

}  // namespace Foundation
