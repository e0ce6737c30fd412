// The number scans of String over 8-bit text where it stands, without making a platform string of it.
#pragma once

#include <cstdint>
#include <string_view>

namespace ZEMA {

// Each gives the result, the value and the position that the operation of String of the same name gives for the same
// text decoded as UTF-8, positions counting bytes instead of UTF-16 units. Text with bytes of 128 and more is left to
// String.
bool ScanFloat(std::string_view text, float& value, std::uint32_t& position);
bool ScanUInt32(std::string_view text, std::uint32_t& value, std::uint32_t& position);

}  // namespace ZEMA
