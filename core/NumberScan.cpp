#include "core/NumberScan.h"

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "core/BoolLiterals.h"
#include "core/CLocale.h"
#include "core/DigitScan.h"

namespace ZEMA {
namespace {

// The platform's number formatter looks at no more units than this, behind the blanks.
constexpr std::ptrdiff_t kNumberLimit = 1024;

// A decimal number in a text: sign, digits with a point, exponent.
struct Decimal {
    const char* first;
    const char* end;
    const char* exponent;  // its sign or first digit; null when there is none
};

char Lower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

bool StartsWithNoCase(std::string_view text, std::string_view lowerCase) {
    return text.size() >= lowerCase.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), text.begin(), [](char a, char b) { return a == Lower(b); });
}

const char* SkipDigits(const char* cursor, const char* last) {
    while (cursor != last && IsDigit(static_cast<unsigned char>(*cursor))) ++cursor;
    return cursor;
}

// Finds the exponent behind the digits; without digits of its own it is no exponent.
void FindExponent(Decimal& number, const char* last) {
    const char* cursor = number.end;
    if (cursor == last || Lower(*cursor) != 'e') return;
    const char* const exponent = ++cursor;
    if (cursor != last && (*cursor == '+' || *cursor == '-')) ++cursor;
    const char* const end = SkipDigits(cursor, last);
    if (end == cursor) return;
    number.exponent = exponent;
    number.end = end;
}

// Finds the number that starts at `first`, behind the blanks. False when there is none; what is used up then, a sign or
// "nan", is up to `end`.
bool FindDecimal(const char* first, const char* last, Decimal& number) {
    last = first + std::min(last - first, kNumberLimit);
    const char* const whole = first != last && *first == '-' ? first + 1 : first;
    const char* cursor = SkipDigits(whole, last);
    std::ptrdiff_t digits = cursor - whole;
    const char* behindPoint = cursor;
    if (cursor != last && *cursor == '.') {
        behindPoint = SkipDigits(cursor + 1, last);
        digits += behindPoint - (cursor + 1);
    }
    if (digits == 0) {
        const bool isNan = StartsWithNoCase({whole, static_cast<std::size_t>(last - whole)}, "nan");
        number = {first, isNan ? whole + 3 : whole, nullptr};
        return false;
    }
    number = {first, behindPoint, nullptr};
    FindExponent(number, last);
    return true;
}

// An exponent beyond 31 bits decides by itself: the number is zero or out of range, whatever its digits.
enum class Exponent { Ordinary, Tiny, Huge };

Exponent ExponentOf(const Decimal& number) {
    if (number.exponent == nullptr) return Exponent::Ordinary;
    const bool isNegative = *number.exponent == '-';
    const bool isSigned = isNegative || *number.exponent == '+';
    std::uint64_t magnitude = 0;
    for (const char* cursor = number.exponent + isSigned; cursor != number.end; ++cursor) {
        magnitude = magnitude * 10 + static_cast<unsigned>(*cursor - '0');
        if (magnitude > std::numeric_limits<std::int32_t>::max()) return isNegative ? Exponent::Tiny : Exponent::Huge;
    }
    return Exponent::Ordinary;
}

bool HasZeroMantissa(const Decimal& number) {
    const char* const end = number.exponent == nullptr ? number.end : number.exponent - 1;
    return std::none_of(number.first, end, [](char byte) { return byte >= '1' && byte <= '9'; });
}

// Up to 15 digits are exact in a double, and so is the power of ten that they are divided by: the quotient is the
// nearest double. Nearly all numbers of a document are that short, and this costs a third of the general conversion.
bool ConvertShort(const Decimal& number, double& value) {
    constexpr std::ptrdiff_t kExactDigits = 15;
    static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    if (number.exponent != nullptr || number.end - number.first > kExactDigits) return false;
    const bool negative = *number.first == '-';
    std::uint64_t digits = 0;
    const char* behindPoint = number.end;
    for (const char* cursor = number.first + negative; cursor != number.end; ++cursor) {
        if (*cursor == '.') {
            behindPoint = cursor + 1;
        } else {
            digits = digits * 10 + static_cast<unsigned>(*cursor - '0');
        }
    }
    const double magnitude = static_cast<double>(digits) / kPowersOfTen[number.end - behindPoint];
    value = negative ? -magnitude : magnitude;
    return true;
}

// The nearest double; false when it is out of range.
bool Convert(const Decimal& number, double& value) {
    if (ConvertShort(number, value)) return true;
#if defined(__cpp_lib_to_chars)
    return std::from_chars(number.first, number.end, value).ec == std::errc();
#else  // a standard library that has from_chars for integers only
    char text[kNumberLimit + 1];
    *std::copy(number.first, number.end, text) = 0;
    errno = 0;
    value = strtod_l(text, nullptr, CLocale());
    return errno != ERANGE;
#endif
}

// The value by way of double, as the formatter rounds it: the double must lie within the range of float, and one below
// the normal doubles counts as out of range. The sign of zero is lost.
bool ConvertToFloat(const Decimal& number, float& value) {
    const Exponent exponent = ExponentOf(number);
    double wide = 0;
    if (exponent == Exponent::Huge) return false;
    if (exponent == Exponent::Ordinary) {
        const bool isInRange = Convert(number, wide) && std::abs(wide) >= DBL_MIN && std::abs(wide) <= double{FLT_MAX};
        if (!isInRange && !HasZeroMantissa(number)) return false;
    }
    const auto rounded = static_cast<float>(wide);
    value = rounded == 0 ? 0.0F : rounded;
    return true;
}

}  // namespace

bool IsAscii(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::uint64_t seen = 0;
    for (; text.size() >= sizeof(seen); text.remove_prefix(sizeof(seen))) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof(word));
        seen |= word;
    }
    for (const char byte : text) seen |= static_cast<unsigned char>(byte);
    return (seen & kHighBits) == 0;
}

bool ScanBool(std::string_view text, bool& value, std::uint32_t& position) {
    if (text.empty()) value = false;
    if (position >= text.size()) return false;
    for (const BoolLiteral& literal : kBoolLiterals) {
        const std::string_view lowerCase = literal.text;
        if (!StartsWithNoCase(text.substr(position), lowerCase)) continue;
        value = literal.value;
        position += static_cast<std::uint32_t>(lowerCase.size());
        return true;
    }
    return false;
}

bool ScanFloat(std::string_view text, float& value, std::uint32_t& position) {
    if (position >= text.size()) return false;
    const char* const last = text.data() + text.size();
    const char* first = text.data() + position;
    while (first != last && (*first == ' ' || *first == '\t')) ++first;
    Decimal number;
    const bool found = FindDecimal(first, last, number);
    position = static_cast<std::uint32_t>(number.end - text.data());
    return found && ConvertToFloat(number, value);
}

bool ScanUInt64(std::string_view text, std::uint64_t& value, std::uint32_t& position) {
    const auto unitAt = [text](std::uint32_t index) -> UniChar { return static_cast<unsigned char>(text[index]); };
    return ScanDigits(unitAt, static_cast<std::uint32_t>(text.size()), value, position);
}

bool ScanUInt32(std::string_view text, std::uint32_t& value, std::uint32_t& position) {
    return ScanNarrow([&](std::uint64_t& wide) { return ScanUInt64(text, wide, position); }, value);
}

}  // namespace ZEMA
