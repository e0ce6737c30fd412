// 8-bit text: bytes that are the same, and numbers and white space, as the standard library of the "C" locale reads
// them whatever the host has set.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace ZEMA {

// The number that the first bytes of a text are in memory.
template <class Word>
Word WordAt(const char* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Whether both texts are the same bytes. Names are compared more often than anything else is done, and most are shorter
// than what a call of the library pays for.
inline bool SameBytes(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    if (size > 16) return std::memcmp(a.data(), b.data(), size) == 0;
    const auto haveSameEnds = [&]<class Word>(Word) {
        const std::size_t last = size - sizeof(Word);
        return WordAt<Word>(a.data()) == WordAt<Word>(b.data()) &&
               WordAt<Word>(a.data() + last) == WordAt<Word>(b.data() + last);
    };
    if (size >= 8) return haveSameEnds(std::uint64_t{});
    if (size >= 4) return haveSameEnds(std::uint32_t{});
    if (size >= 2) return haveSameEnds(std::uint16_t{});
    return size == 0 || a[0] == b[0];
}

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
