// Scanning runs of characters from a string.
#pragma once

#include <string_view>

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// A set of UTF-16 units, none of them half of a pair. Refers to the text that it was made from, which must outlive it.
class FOUNDATION_EXPORT NSCharacterSet {
public:
    constexpr explicit NSCharacterSet(std::u16string_view members) : members_(members) {}

    constexpr bool characterIsMember(UniChar unit) const {
        return members_.find(static_cast<char16_t>(unit)) != std::u16string_view::npos;
    }

    // White space and line ends.
    static const NSCharacterSet& whitespaceAndNewlineCharacterSet();

private:
    std::u16string_view members_;
};

// Reads a string from a position on, counted in UTF-16 units.
//
// Ownership: keeps the string, which must not change meanwhile; a set to be skipped must outlive the scanner.
class FOUNDATION_EXPORT NSScanner {
public:
    explicit NSScanner(CFStringRef string);

    CFIndex scanLocation() const { return location_; }
    void setScanLocation(CFIndex location) { location_ = location; }  // at most the length

    // What is passed over before a scan, white space and line ends at first; null for nothing.
    void setCharactersToBeSkipped(const NSCharacterSet* skipped) { skipped_ = skipped; }

    // Passes over characters to be skipped, then takes the longest run of members and moves behind it. False, and the
    // position stays where it was, when there is none. `run` receives where it stands, so that no text is copied.
    bool scanCharactersFromSet(const NSCharacterSet& set, CFRange* run);
    // The same, with the run as a string of its own; `intoString` may be null.
    bool scanCharactersFromSet(const NSCharacterSet& set, CFPointer<CFStringRef>* intoString);

private:
    // The first position at or after `start` whose unit is not a member.
    CFIndex EndOfRun(CFIndex start, const NSCharacterSet& set) const;

    CFPointer<CFStringRef> string_;
    CFIndex length_;
    CFIndex location_ = 0;
    const NSCharacterSet* skipped_;
};

}  // namespace Foundation
