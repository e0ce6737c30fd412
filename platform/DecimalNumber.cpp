// Reads a decimal number where it stands. Nothing here depends on the locale of the process or the user.
#include "platform/DecimalNumber.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#if !defined(__cpp_lib_to_chars)
#include <cerrno>
#include <clocale>
#if defined(__APPLE__)
#include <xlocale.h>
#endif
#endif

namespace ZEMA {
namespace {

// A number taken apart, before anything is converted.
struct Decimal {
    bool isNumber = false;  // false: only `end` means anything
    bool isNegative = false;
    std::size_t end = 0;
    std::uint64_t mantissa = 0;      // all digits without the point; wrong with more than 19
    std::int64_t digitCount = 0;     // zeros in front included
    std::int64_t fractionCount = 0;  // digits behind the point
    std::int64_t exponent = 0;       // as written, up to just beyond 32 bits
};

constexpr std::int64_t kLargestExponent = std::numeric_limits<std::int32_t>::max();

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

// A run of digits: where it ends, and the mantissa with them behind it.
struct DigitRun {
    const char* end;
    std::uint64_t mantissa;
};

inline DigitRun ReadDigits(const char* cursor, const char* end, std::uint64_t mantissa) {
    for (; cursor != end; ++cursor) {
        const auto digit = static_cast<unsigned char>(*cursor - '0');
        if (digit > 9) break;
        mantissa = mantissa * 10 + digit;
    }
    return {cursor, mantissa};
}

// Adds what follows an 'e' or 'E': a sign or none, digits. Without digits nothing is taken.
Decimal WithExponent(std::string_view text, Decimal number) {
    std::size_t position = number.end + 1;
    const bool isNegative = position < text.size() && text[position] == '-';
    if (isNegative || (position < text.size() && text[position] == '+')) ++position;
    std::int64_t magnitude = 0;
    for (; position < text.size() && IsDigit(text[position]); ++position) {
        if (magnitude <= kLargestExponent) magnitude = magnitude * 10 + (text[position] - '0');
        number.end = position + 1;
    }
    number.exponent = isNegative ? -magnitude : magnitude;
    return number;
}

bool StartsWithNan(std::string_view text) {
    constexpr std::string_view kLetters = "nan";
    return text.size() >= kLetters.size() &&
           std::equal(kLetters.begin(), kLetters.end(), text.begin(),
                      [](char letter, char byte) { return byte == letter || byte + ('a' - 'A') == letter; });
}

// Nearly all numbers of a document pass here, so what is read stays in registers to the end.
Decimal FindDecimal(std::string_view text) {
    const char* const end = text.data() + text.size();
    const bool isNegative = text.starts_with('-');
    const char* const start = text.data() + (isNegative ? 1 : 0);
    DigitRun digits = ReadDigits(start, end, 0);
    std::int64_t digitCount = digits.end - start;
    std::int64_t fractionCount = 0;
    if (digits.end != end && *digits.end == '.') {
        const char* const fraction = digits.end + 1;
        digits = ReadDigits(fraction, end, digits.mantissa);
        fractionCount = digits.end - fraction;
        digitCount += fractionCount;
    }
    if (digitCount == 0) {
        const std::size_t signSize = isNegative ? 1 : 0;
        return {.end = signSize + (StartsWithNan(text.substr(signSize)) ? 3 : 0)};
    }
    const Decimal number{.isNumber = true,
                         .isNegative = isNegative,
                         .end = static_cast<std::size_t>(digits.end - text.data()),
                         .mantissa = digits.mantissa,
                         .digitCount = digitCount,
                         .fractionCount = fractionCount};
    const bool hasExponent = digits.end != end && (*digits.end == 'e' || *digits.end == 'E');
    return hasExponent ? WithExponent(text, number) : number;
}

// Up to 15 digits are exact in a double, and so is each of these powers of ten.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t kLargestExactPower = 22;
constexpr std::int64_t kExactDigits = 15;

// Whether all digits before the exponent are zeros.
bool IsZero(std::string_view text, const Decimal& number) {
    if (number.digitCount <= kExactDigits) return number.mantissa == 0;
    const std::size_t other = text.find_first_not_of("-.0");
    return other >= number.end || text[other] == 'e' || text[other] == 'E';
}

// The nearest double of the magnitude that is written in `digits`; none when it is out of range.
std::optional<double> Convert(std::string_view digits) {
#if defined(__cpp_lib_to_chars)
    double value = 0;
    const bool isInRange = std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc();
#else  // a standard library that has from_chars for integers only
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    char text[kLongestDecimal + 1];
    *std::copy(digits.begin(), digits.end(), text) = '\0';
    errno = 0;
    const double value = strtod_l(text, nullptr, cLocale);
    const bool isInRange = errno != ERANGE;
#endif
    return isInRange ? std::optional(value) : std::nullopt;
}

// Short numbers, which is nearly all of a document, are one exact integer times or divided by one exact power of ten,
// and so rounded once; that costs a third of the general conversion.
std::optional<double> NearestDouble(std::string_view text, const Decimal& number) {
    const std::int64_t power = number.exponent - number.fractionCount;
    if (number.digitCount <= kExactDigits && std::abs(power) <= kLargestExactPower) {
        const auto mantissa = static_cast<double>(number.mantissa);
        return power < 0 ? mantissa / kPowersOfTen[-power] : mantissa * kPowersOfTen[power];
    }
    const std::size_t start = number.isNegative ? 1 : 0;
    return Convert(text.substr(start, number.end - start));
}

// By way of a double, as the framework does: its range decides, and the value is rounded twice.
std::optional<float> ValueOf(std::string_view text, const Decimal& number) {
    // An exponent beyond 32 bits decides by itself: out of range or zero, whatever the digits.
    if (number.exponent > kLargestExponent) return std::nullopt;
    if (number.exponent < -kLargestExponent || IsZero(text, number)) return 0.0F;
    const std::optional<double> value = NearestDouble(text, number);
    // Doubles below the normal ones fail as well: the C library of this system calls them out of range.
    if (!value || *value < DBL_MIN || *value > double{FLT_MAX}) return std::nullopt;
    const auto rounded = static_cast<float>(*value);
    return number.isNegative && rounded > 0 ? -rounded : rounded;  // the sign of zero is lost
}

}  // namespace

DecimalNumber ReadDecimal(std::string_view text) {
    text = text.substr(0, kLongestDecimal);
    const Decimal number = FindDecimal(text);
    return {number.end, number.isNumber ? ValueOf(text, number) : std::nullopt};
}

}  // namespace ZEMA
