// One buffer for texts that come again and again.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "core/AString.h"

namespace ZEMA {

// Remembers texts, so that one seen before is handed out as a share of its buffer instead of a new one. Names and most
// attribute values of a document are few and come thousands of times.
//
// The memory is bounded: each text has one slot, and a newer text takes the place of the one that has its slot. So
// handing out costs the same whatever the texts are.
class SharedTexts {
public:
    AString Share(std::string_view text);

private:
    // Longer texts rarely come twice, and would be kept for nothing.
    static constexpr std::size_t kLongest = 32;
    static constexpr std::size_t kSlotCount = 1024;

    std::array<AString, kSlotCount> slots_;
};

}  // namespace ZEMA
