// The four-part version numbers that documents carry and loaders compare.
#pragma once

#include <array>
#include <compare>
#include <cstdint>

#include "core/String.h"

namespace ZEMA {

// Components in order of significance; the first two are the major and the minor number. Compared as numbers, from the
// first component on.
struct Version {
    std::array<std::uint32_t, 4> components{};

    constexpr Version() = default;
    explicit constexpr Version(std::uint32_t first, std::uint32_t second = 0, std::uint32_t third = 0,
                               std::uint32_t fourth = 0)
        : components{first, second, third, fourth} {}

    friend bool operator==(const Version&, const Version&) = default;
    friend std::strong_ordering operator<=>(const Version&, const Version&) = default;

    // Appends the components separated by ".", without the zeros at the end; the first is always written.
    void AppendTo(String& out) const;

    // Reads up to four numbers separated by "." and moves `position` behind them. False when a number cannot be read,
    // at the start or after a "."; components that are not reached keep their values either way.
    bool ParseFrom(const String& text, std::uint32_t& position);
};

}  // namespace ZEMA
