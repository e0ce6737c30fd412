// The reading of unsigned numbers that String and the scans over bytes share.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <optional>

namespace ZEMA {

// White space and line ends, which the platform's scanner steps over between a sign and its digits.
inline bool IsScannerBlank(UniChar unit) {
    if (unit < 0x80) return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
    return unit == 0x85 || unit == 0xA0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200B) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

inline bool IsDigit(UniChar unit) {
    return unit >= '0' && unit <= '9';
}

// Adds a digit to a number; nothing when it would pass 2^64 - 1.
inline std::optional<std::uint64_t> WithDigit(std::uint64_t value, unsigned digit) {
    constexpr std::uint64_t kLastSafe = 0x1999999999999999;  // (2^64 - 1) / 10, remainder 5
    if (value > kLastSafe || (value == kLastSafe && digit > 5)) return std::nullopt;
    return value * 10 + digit;
}

// String::ScanUInt64 over anything that gives `length` units by `unitAt(index)`, each index not before the last one.
template <class UnitAt>
bool ScanDigits(UnitAt unitAt, std::uint32_t length, std::uint64_t& value, std::uint32_t& position) {
    std::uint32_t cursor = position;
    const auto unit = [&] { return cursor < length ? UniChar{unitAt(cursor)} : UniChar{0}; };

    while (cursor < length && !IsDigit(unit()) && unit() != '+' && unit() != '-') ++cursor;
    if (cursor >= length) return false;
    const bool negative = unit() == '-';
    if (negative) ++cursor;
    if (unit() == '+') ++cursor;
    position = cursor;  // where a missing number leaves it

    while (cursor < length && IsScannerBlank(unit())) ++cursor;
    if (!IsDigit(unit())) return false;
    std::optional<std::uint64_t> number = 0;
    for (; IsDigit(unit()); ++cursor) {
        if (number) number = WithDigit(*number, static_cast<unsigned>(unit() - '0'));
    }
    position = cursor;
    if (negative || !number) return false;
    value = *number;
    return true;
}

// The same for 32 bits: a number too large for them fails, and is stepped over.
template <class ScanWide>
bool ScanNarrow(ScanWide scanWide, std::uint32_t& value) {
    std::uint64_t wide = 0;
    if (!scanWide(wide) || wide > 0xFFFFFFFF) return false;
    value = static_cast<std::uint32_t>(wide);
    return true;
}

}  // namespace ZEMA
