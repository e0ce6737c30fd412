#include "core/ByteText.h"

#include <cerrno>
#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace ZEMA {
namespace {

constexpr int kNoDigit = 36;  // above the digits of every base

int DigitValue(char byte) {
    if (byte >= '0' && byte <= '9') return byte - '0';
    if (byte >= 'a' && byte <= 'z') return byte - 'a' + 10;
    if (byte >= 'A' && byte <= 'Z') return byte - 'A' + 10;
    return kNoDigit;
}

// Whether a hexadecimal number with its prefix starts here. A prefix without a digit behind it is the number 0.
bool StartsHexadecimal(const char* text) {
    return text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && DigitValue(text[2]) < 16;
}

// Settles base 0 and steps over the prefix of a hexadecimal number.
int ResolveBase(const char*& cursor, int base) {
    if ((base == 0 || base == 16) && StartsHexadecimal(cursor)) {
        cursor += 2;
        return 16;
    }
    if (base == 0) return *cursor == '0' ? 8 : 10;
    return base;
}

// For reading numbers whatever locale the host has set. Made on first use and never freed.
locale_t CLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

#if defined(__cpp_lib_to_chars)
// Most floats of a document are plain decimal numbers, which the faster conversion of the standard library reads as the
// slower one does. Null where it may be otherwise: hexadecimal numbers, those too small or too large, and what begins
// with no digit.
const char* ReadPlainFloat(const char* text, float& value) {
    const char* const digits = *text == '-' ? text + 1 : text;
    if (DigitValue(*digits) > 9) return nullptr;
    const auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
    if (error != std::errc() || *end == 'x' || *end == 'X') return nullptr;
    const bool isZero = value == 0 && end == digits + 1;
    return isZero || std::fabs(value) > FLT_MIN ? end : nullptr;
}
#else
const char* ReadPlainFloat(const char*, float&) {
    return nullptr;
}
#endif

}  // namespace

std::uint32_t ParseUInt32(const char* text, const char** end, int base) {
    constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
    errno = 0;
    if (end != nullptr) *end = text;
    if (base < 0 || base == 1 || base > 36) return 0;

    const char* cursor = text;
    while (IsWhiteSpace(*cursor)) ++cursor;
    const bool negative = *cursor == '-';
    if (negative || *cursor == '+') ++cursor;
    base = ResolveBase(cursor, base);

    const char* const digits = cursor;
    std::uint64_t value = 0;
    bool fits = !negative;
    for (; DigitValue(*cursor) < base; ++cursor) {
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(DigitValue(*cursor));
        if (value > kLargest) fits = false;  // whatever it wraps to later: only the end of the digits is looked for now
    }
    if (cursor == digits) return 0;
    if (end != nullptr) *end = cursor;
    if (fits) return static_cast<std::uint32_t>(value);
    errno = ERANGE;
    return kLargest;
}

float ParseFloat(const char* text, const char** end) {
    errno = 0;
    float value = 0;
    const char* behind = ReadPlainFloat(text, value);
    if (behind == nullptr) {
        char* behindAny = nullptr;
        value = strtof_l(text, &behindAny, CLocale());
        behind = behindAny;
    }
    if (end != nullptr) *end = behind;
    return value;
}

}  // namespace ZEMA
