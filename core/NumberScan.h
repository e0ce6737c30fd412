// The number scans of String over 8-bit text where it stands, without making a platform string of it.
#pragma once

#include <cstdint>
#include <string_view>

namespace ZEMA {

// Whether the scans below may be used for a text: it has no byte of 128 or more. Any other text is left to String,
// since it may not be UTF-8 at all, and holds blanks and digits that these scans do not know.
bool IsAscii(std::string_view text);

// Each gives the result, the value and the position that the operation of String of the same name gives for the same
// ASCII text. They allocate nothing and do not look at the process's locale.
bool ScanBool(std::string_view text, bool& value, std::uint32_t& position);
bool ScanFloat(std::string_view text, float& value, std::uint32_t& position);
bool ScanUInt64(std::string_view text, std::uint64_t& value, std::uint32_t& position);
bool ScanUInt32(std::string_view text, std::uint32_t& value, std::uint32_t& position);

}  // namespace ZEMA
