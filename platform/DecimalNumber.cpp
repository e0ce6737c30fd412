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
    std::size_t digitCount = 0;      // zeros in front left out, so 0 means zero
    std::int64_t fractionCount = 0;  // digits behind the point
    std::int64_t exponent = 0;       // as written, up to just beyond 32 bits
};

constexpr std::int64_t kLargestExponent = std::numeric_limits<std::int32_t>::max();

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

std::size_t TakeDigits(std::string_view text, std::size_t position, Decimal& number) {
    if (number.digitCount == 0) {
        while (position < text.size() && text[position] == '0') ++position;
    }
    const std::size_t start = position;
    std::uint64_t mantissa = number.mantissa;
    for (; position < text.size() && IsDigit(text[position]); ++position) {
        mantissa = mantissa * 10 + static_cast<unsigned>(text[position] - '0');
    }
    number.mantissa = mantissa;
    number.digitCount += position - start;
    return position;
}

// 'e' or 'E', a sign or none, digits; without digits nothing is taken.
void TakeExponent(std::string_view text, Decimal& number) {
    std::size_t position = number.end;
    if (position == text.size() || (text[position] != 'e' && text[position] != 'E')) return;
    ++position;
    const bool isNegative = position < text.size() && text[position] == '-';
    if (isNegative || (position < text.size() && text[position] == '+')) ++position;
    std::int64_t magnitude = 0;
    for (; position < text.size() && IsDigit(text[position]); ++position) {
        if (magnitude <= kLargestExponent) magnitude = magnitude * 10 + (text[position] - '0');
        number.end = position + 1;
    }
    number.exponent = isNegative ? -magnitude : magnitude;
}

bool StartsWithNan(std::string_view text) {
    constexpr std::string_view kLetters = "nan";
    return text.size() >= kLetters.size() &&
           std::equal(kLetters.begin(), kLetters.end(), text.begin(),
                      [](char letter, char byte) { return byte == letter || byte + ('a' - 'A') == letter; });
}

Decimal FindDecimal(std::string_view text) {
    Decimal number;
    number.isNegative = text.starts_with('-');
    const std::size_t start = number.isNegative ? 1 : 0;
    std::size_t end = TakeDigits(text, start, number);
    std::size_t pointCount = 0;
    if (end < text.size() && text[end] == '.') {
        pointCount = 1;
        const std::size_t fraction = end + 1;
        end = TakeDigits(text, fraction, number);
        number.fractionCount = static_cast<std::int64_t>(end - fraction);
    }
    number.isNumber = end - start > pointCount;
    if (number.isNumber) {
        number.end = end;
        TakeExponent(text, number);
    } else {
        number.end = start + (StartsWithNan(text.substr(start)) ? 3 : 0);
    }
    return number;
}

// Up to 15 digits are exact in a double, and so is each of these powers of ten.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t kLargestExactPower = 22;
constexpr std::size_t kExactDigits = 15;

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
    if (number.exponent < -kLargestExponent || number.digitCount == 0) return 0.0F;
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
