// A set of characters in memory. Not for use outside of this library.
#pragma once

#include <algorithm>
#include <bitset>
#include <vector>

#include "platform/CoreFoundation/CFRuntime.h"

struct __CFCharacterSet : ZEMA::CF::Object {
    __CFCharacterSet() : Object(ZEMA::CF::Type::CharacterSet, 0) {}

    bool Contains(char32_t codePoint) const {
        return codePoint < ascii.size() ? ascii[codePoint] : std::ranges::binary_search(others, codePoint);
    }

    std::bitset<128> ascii;
    std::vector<char32_t> others;  // above ASCII, in order
};
