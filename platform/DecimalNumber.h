// The one reading of decimal numbers, for the number formatter and for whoever has bytes.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace ZEMA {

inline constexpr std::size_t kLongestDecimal = 1024;  // bytes; what follows is not looked at

// What was read, and how far.
struct DecimalNumber {
    std::size_t end;             // behind what is used up, number or not
    std::optional<float> value;  // none where there is no number, or one out of range
};

// Reads the number at the front of ASCII text: '-' or nothing, digits with a point somewhere or none, an exponent or
// none. A lone '-', and "nan" in any case, are used up though they are no number.
CF_EXPORT DecimalNumber ReadDecimal(std::string_view text);

}  // namespace ZEMA
