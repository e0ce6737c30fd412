// Numbers and white space in 8-bit text, as the standard library of the "C" locale reads them whatever the host has
// set.
#pragma once

#include <cstdint>

namespace ZEMA {

// Space, tab, line feed, vertical tab, form feed, carriage return.
inline bool IsWhiteSpace(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// Reads an unsigned integer in `base` (0 chooses 16 after 0x, 8 after 0, else 10; 1 and above 36 read nothing) from
// zero-terminated text. `end`, unless null, is set behind the last digit, or to `text` when there is none. `errno` is
// cleared first; a value that does not fit in 32 bits, and any negative one, gives 0xFFFFFFFF with errno ERANGE.
std::uint32_t ParseUInt32(const char* text, const char** end, int base);

// As `strtof`: errno is cleared first, `end` as above.
float ParseFloat(const char* text, const char** end);

}  // namespace ZEMA
