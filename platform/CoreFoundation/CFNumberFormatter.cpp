// Reads a decimal number where it stands. Nothing here depends on the locale of the process or the user.
#include <CoreFoundation/CFNumberFormatter.h>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
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
    return unit >= '0' && unit <= '9';
}

// The parts of a number at the front of some units, as positions behind each part.
struct Shape {
    std::size_t start = 0;     // of the digits, behind a '-'
    std::size_t mantissa = 0;  // end of digits, point, digits
    std::size_t end = 0;       // end of the number: behind an exponent, if there is one
    bool isNumber = false;
    bool isZero = true;  // no digit of the mantissa other than 0
    bool isNan = false;  // the three letters, which are passed over but are no value
};

template <class Unit>
std::size_t EndOfDigits(std::span<const Unit> units, std::size_t position) {
    while (position < units.size() && IsDigit(units[position])) ++position;
    return position;
}

template <class Unit>
bool StartsWithNan(std::span<const Unit> units) {
    constexpr char kLetters[] = {'n', 'a', 'n'};
    return units.size() >= 3 &&
           std::equal(std::begin(kLetters), std::end(kLetters), units.begin(),
                      [](char letter, Unit unit) { return unit == letter || unit + 32 == letter; });
}

template <class Unit>
std::size_t EndOfExponent(std::span<const Unit> units, std::size_t position) {
    if (position == units.size() || (units[position] != 'e' && units[position] != 'E')) return position;
    std::size_t digits = position + 1;
    if (digits < units.size() && (units[digits] == '+' || units[digits] == '-')) ++digits;
    const std::size_t end = EndOfDigits(units, digits);
    return end > digits ? end : position;
}

template <class Unit>
Shape ShapeOf(std::span<const Unit> units) {
    Shape shape;
    if (!units.empty() && units[0] == '-') shape.start = 1;
    const std::size_t point = EndOfDigits(units, shape.start);
    const bool hasPoint = point < units.size() && units[point] == '.';
    shape.mantissa = hasPoint ? EndOfDigits(units, point + 1) : point;
    const std::size_t digitCount = shape.mantissa - shape.start - (hasPoint ? 1 : 0);
    shape.isNumber = digitCount > 0;
    if (!shape.isNumber) {
        shape.isNan = StartsWithNan(units.subspan(shape.start));
        shape.end = shape.start + (shape.isNan ? 3 : 0);
        return shape;
    }
    const auto mantissa = units.subspan(shape.start, shape.mantissa - shape.start);
    shape.isZero = std::ranges::none_of(mantissa, [](Unit unit) { return unit >= '1' && unit <= '9'; });
    shape.end = EndOfExponent(units, shape.mantissa);
    return shape;
}

// An exponent beyond 32 bits decides by itself: the number is zero or out of range, whatever its digits.
enum class Exponent { Ordinary, Tiny, Huge };

Exponent ExponentOf(std::span<const char> number, const Shape& shape) {
    if (shape.end == shape.mantissa) return Exponent::Ordinary;
    std::size_t position = shape.mantissa + 1;
    const bool isNegative = number[position] == '-';
    if (!IsDigit(number[position])) ++position;
    std::uint64_t magnitude = 0;
    for (const char digit : number.subspan(position, shape.end - position)) {
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(digit - '0');
        if (magnitude > std::numeric_limits<std::int32_t>::max()) return isNegative ? Exponent::Tiny : Exponent::Huge;
    }
    return Exponent::Ordinary;
}

// By way of a double, as the framework does: its range decides, and a value is rounded twice.
std::optional<float> ValueOf(std::span<const char> number, const Shape& shape) {
    const Exponent exponent = ExponentOf(number, shape);
    if (exponent == Exponent::Huge) return std::nullopt;
    if (exponent == Exponent::Tiny || shape.isZero) return 0.0f;
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + shape.end, value);
    // A C library that sets ERANGE for doubles below the normal ones makes those fail.
    if (result.ec != std::errc() || std::abs(value) < DBL_MIN || std::abs(value) > double{FLT_MAX}) return std::nullopt;
    const float rounded = static_cast<float>(value);
    return rounded == 0 ? 0.0f : rounded;  // the sign of zero is lost
}

std::optional<float> Read(std::span<const char> number, const Shape& shape) {
    return ValueOf(number, shape);
}

std::optional<float> Read(std::span<const UniChar> number, const Shape& shape) {
    char digits[kMaximumUnits];
    std::transform(number.begin(), number.begin() + static_cast<std::ptrdiff_t>(shape.end), digits,
                   [](UniChar unit) { return static_cast<char>(unit); });
    return ValueOf({digits, shape.end}, shape);
}

}  // namespace
}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFTypeID CFNumberFormatterGetTypeID() {
    return static_cast<CFTypeID>(Type::NumberFormatter);
}

CFNumberFormatterRef CFNumberFormatterCreate(CFAllocatorRef, CFLocaleRef, CFNumberFormatterStyle) {
    return &theFormatter;
}

Boolean CFNumberFormatterGetValueFromString(CFNumberFormatterRef formatter, CFStringRef text, CFRange* range,
                                            CFNumberType type, void* value) {
    Require(Checked(formatter, Type::NumberFormatter).form == 0 && type == kCFNumberFloat32Type);
    const TextView view = range ? ViewOf(text, *range) : ViewOf(text);
    return view.Visit([&](auto units) -> Boolean {
        const auto first =
            std::ranges::find_if_not(units, [](auto unit) { return IsBlank(static_cast<UniChar>(unit)); });
        if (first == units.end()) return false;  // the range stays as it is
        const auto blankCount = static_cast<std::size_t>(first - units.begin());
        const auto number = units.subspan(blankCount, std::min(units.size() - blankCount, kMaximumUnits));
        const Shape shape = ShapeOf(number);
        if (range) range->length = static_cast<CFIndex>(blankCount + shape.end);
        const std::optional<float> read = shape.isNumber ? Read(number, shape) : std::nullopt;
        if (read) *static_cast<float*>(value) = *read;
        return read.has_value();
    });
}
