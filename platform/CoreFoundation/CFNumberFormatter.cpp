// Reads a decimal number where it stands. Nothing here depends on the locale of the process or the user.
#include <CoreFoundation/CFNumberFormatter.h>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <optional>

#include "platform/CoreFoundation/StringObject.h"

struct __CFNumberFormatter : ZEMA::CF::Object {
    constexpr __CFNumberFormatter() : Object(ZEMA::CF::Type::NumberFormatter, 0, ZEMA::CF::kConstantBit) {}
};

namespace ZEMA::CF {
namespace {

// There are no settings, so that one formatter is all of them.
constinit __CFNumberFormatter theFormatter;

constexpr std::size_t kMaximumUnits = 1024;  // of one number; what follows is not looked at

bool IsBlank(UniChar unit) {
    if (unit < 0x80) return unit == ' ' || unit == '\t';
    return unit == 0x00A0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200B) || unit == 0x202F || unit == 0x205F ||
           unit == 0x3000;
}

template <class Unit>
bool IsDigit(Unit unit) {
    return static_cast<unsigned>(unit - '0') < 10;
}

// What stands at the front of some units. Without a number only `end` means anything.
struct Number {
    bool isNumber = false;
    bool isNegative = false;
    std::size_t end = 0;             // behind what is used up, number or not
    std::uint64_t mantissa = 0;      // all digits without the point; wrong with more than 19
    std::size_t digitCount = 0;      // zeros in front left out, so 0 means zero
    std::int64_t fractionCount = 0;  // digits behind the point
    std::int64_t exponent = 0;       // as written, up to just beyond 32 bits
};

constexpr std::int64_t kLargestExponent = std::numeric_limits<std::int32_t>::max();

template <class Unit>
std::size_t TakeDigits(std::span<const Unit> units, std::size_t position, Number& number) {
    if (number.digitCount == 0) {
        while (position < units.size() && units[position] == '0') ++position;
    }
    const std::size_t start = position;
    std::uint64_t mantissa = number.mantissa;
    for (; position < units.size() && IsDigit(units[position]); ++position) {
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(units[position] - '0');
    }
    number.mantissa = mantissa;
    number.digitCount += position - start;
    return position;
}

// 'e' or 'E', a sign or none, digits; without digits nothing is taken.
template <class Unit>
void TakeExponent(std::span<const Unit> units, Number& number) {
    std::size_t position = number.end;
    if (position == units.size() || (units[position] != 'e' && units[position] != 'E')) return;
    ++position;
    const bool isNegative = position < units.size() && units[position] == '-';
    if (isNegative || (position < units.size() && units[position] == '+')) ++position;
    std::int64_t magnitude = 0;
    for (; position < units.size() && IsDigit(units[position]); ++position) {
        if (magnitude <= kLargestExponent) magnitude = magnitude * 10 + (units[position] - '0');
        number.end = position + 1;
    }
    number.exponent = isNegative ? -magnitude : magnitude;
}

template <class Unit>
bool StartsWithNan(std::span<const Unit> units) {
    constexpr char kLetters[] = {'n', 'a', 'n'};
    return units.size() >= 3 &&
           std::equal(std::begin(kLetters), std::end(kLetters), units.begin(),
                      [](char letter, Unit unit) { return unit == letter || unit + 32 == letter; });
}

template <class Unit>
Number NumberAt(std::span<const Unit> units) {
    Number number;
    number.isNegative = !units.empty() && units[0] == '-';
    const std::size_t start = number.isNegative ? 1 : 0;
    std::size_t end = TakeDigits(units, start, number);
    std::size_t pointCount = 0;
    if (end < units.size() && units[end] == '.') {
        pointCount = 1;
        const std::size_t fraction = end + 1;
        end = TakeDigits(units, fraction, number);
        number.fractionCount = static_cast<std::int64_t>(end - fraction);
    }
    number.isNumber = end - start > pointCount;
    if (number.isNumber) {
        number.end = end;
        TakeExponent(units, number);
    } else {
        number.end = start + (StartsWithNan(units.subspan(start)) ? 3 : 0);  // passed over, but no value
    }
    return number;
}

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t kLargestExactPower = 22;
constexpr std::size_t kExactDigits = 15;

// The nearest double of the magnitude. Short numbers, which is nearly all, are one exact integer times or divided by
// one exact power of ten, and so rounded once.
template <class Unit>
std::optional<double> NearestDouble(std::span<const Unit> units, const Number& number) {
    const std::int64_t power = number.exponent - number.fractionCount;
    if (number.digitCount <= kExactDigits && std::abs(power) <= kLargestExactPower) {
        const auto mantissa = static_cast<double>(number.mantissa);
        return power < 0 ? mantissa / kPowersOfTen[-power] : mantissa * kPowersOfTen[power];
    }
    char digits[kMaximumUnits];
    const std::size_t start = number.isNegative ? 1 : 0;
    const char* end = std::transform(units.begin() + static_cast<std::ptrdiff_t>(start),
                                     units.begin() + static_cast<std::ptrdiff_t>(number.end), digits,
                                     [](Unit unit) { return static_cast<char>(unit); });
    double value = 0;
    const bool isInRange = std::from_chars(digits, end, value).ec == std::errc();
    return isInRange ? std::optional(value) : std::nullopt;
}

// By way of a double, as the framework does: its range decides, and the value is rounded twice.
template <class Unit>
std::optional<float> ValueOf(std::span<const Unit> units, const Number& number) {
    // An exponent beyond 32 bits decides by itself: out of range or zero, whatever the digits.
    if (number.exponent > kLargestExponent) return std::nullopt;
    if (number.exponent < -kLargestExponent || number.digitCount == 0) return 0.0f;
    const std::optional<double> value = NearestDouble(units, number);
    // Doubles below the normal ones fail as well: the C library of this system calls them out of range.
    if (!value || *value < DBL_MIN || *value > double{FLT_MAX}) return std::nullopt;
    const float rounded = static_cast<float>(*value);
    return number.isNegative && rounded > 0 ? -rounded : rounded;  // the sign of zero is lost
}

}  // namespace
}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFNumberFormatterRef CFNumberFormatterCreate(CFAllocatorRef, CFLocaleRef, CFNumberFormatterStyle) {
    return &theFormatter;
}

Boolean CFNumberFormatterGetValueFromString(CFNumberFormatterRef formatter, CFStringRef text, CFRange* range,
                                            CFNumberType type, void* value) {
    Require(Checked(formatter, Type::NumberFormatter).form == 0 && type == kCFNumberFloat32Type);
    const TextView view = range ? ViewOf(text, *range) : ViewOf(text);
    return view.Visit([&](auto units) -> Boolean {
        std::size_t blankCount = 0;
        while (blankCount < units.size() && IsBlank(static_cast<UniChar>(units[blankCount]))) ++blankCount;
        if (blankCount == units.size()) return false;  // the range stays as it is
        const auto rest = units.subspan(blankCount, std::min(units.size() - blankCount, kMaximumUnits));
        const Number number = NumberAt(rest);
        if (range) range->length = static_cast<CFIndex>(blankCount + number.end);
        const std::optional<float> read = number.isNumber ? ValueOf(rest, number) : std::nullopt;
        if (read) *static_cast<float*>(value) = *read;
        return read.has_value();
    });
}
