// The scans of String and those over bytes: booleans, floats, unsigned integers.
#include "core/NumberScan.h"

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

#include "core/CLocale.h"
#include "core/String.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {
namespace {

using Foundation::CFPointer;

struct BoolLiteral {
    const char* text;  // lower case, ASCII
    bool value;
};

// In the order in which they are tried: "no" takes the front of any longer word.
constexpr BoolLiteral kBoolLiterals[] = {{"0", false},  {"1", true},      {"no", false},
                                         {"yes", true}, {"false", false}, {"true", true}};

// White space and line ends, which the platform's scanner steps over between a sign and its digits.
bool IsScannerBlank(UniChar unit) {
    if (unit < 0x80) return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
    return unit == 0x85 || unit == 0xA0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200B) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

bool IsDigit(UniChar unit) {
    return unit >= '0' && unit <= '9';
}

// Adds a digit to a number; nothing when it would pass 2^64 - 1.
std::optional<std::uint64_t> WithDigit(std::uint64_t value, unsigned digit) {
    constexpr std::uint64_t kLastSafe = 0x1999999999999999;  // (2^64 - 1) / 10, remainder 5
    if (value > kLastSafe || (value == kLastSafe && digit > 5)) return std::nullopt;
    return value * 10 + digit;
}

// String::ScanUInt64 over anything that gives `length` units by `unitAt(index)`, each index not before the last one.
template <class UnitAt>
bool ScanDigits(UnitAt unitAt, std::uint32_t length, std::uint64_t& value, std::uint32_t& position) {
    std::uint32_t cursor = position;
    const auto unit = [&] { return cursor < length ? UniChar{unitAt(cursor)} : UniChar{0}; };

    while (cursor < length && !IsDigit(unit()) && unit() != '+' && unit() != '-') ++cursor;
    if (cursor >= length) return false;
    const bool negative = unit() == '-';
    if (negative) ++cursor;
    if (unit() == '+') ++cursor;
    position = cursor;  // where a missing number leaves it

    while (cursor < length && IsScannerBlank(unit())) ++cursor;
    if (!IsDigit(unit())) return false;
    std::optional<std::uint64_t> number = 0;
    for (; IsDigit(unit()); ++cursor) {
        if (number) number = WithDigit(*number, static_cast<unsigned>(unit() - '0'));
    }
    position = cursor;
    if (negative || !number) return false;
    value = *number;
    return true;
}

// The same for 32 bits: a number too large for them fails, and is stepped over.
template <class ScanWide>
bool ScanNarrow(ScanWide scanWide, std::uint32_t& value) {
    std::uint64_t wide = 0;
    if (!scanWide(wide) || wide > 0xFFFFFFFF) return false;
    value = static_cast<std::uint32_t>(wide);
    return true;
}

// Reads the units of a platform string one after the other.
//
// Copies the units out of the string in runs, since a call for each unit is slow. The string outlives the window and
// does not change meanwhile.
class UnitWindow {
public:
    explicit UnitWindow(CFStringRef text) : text_(text), length_(CFStringGetLength(text)) {}

    // The unit at `index`, which is inside the text. Going forward is cheap, going back reads a run anew.
    UniChar operator[](CFIndex index) {
        if (index < start_ || index - start_ >= count_) ReadRun(index);
        return units_[index - start_];
    }

private:
    static constexpr CFIndex kRunLength = 64;

    void ReadRun(CFIndex index) {
        start_ = index;
        count_ = std::min(kRunLength, length_ - index);
        CFStringGetCharacters(text_, CFRangeMake(start_, count_), units_);
    }

    CFStringRef text_;
    CFIndex length_;
    CFIndex start_ = 0;  // of the run that `units_` holds
    CFIndex count_ = 0;
    UniChar units_[kRunLength];
};

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

bool String::ScanBool(bool& value, std::uint32_t& position) const {
    if (IsEmpty()) value = false;
    for (const BoolLiteral& literal : kBoolLiterals) {
        const String text(literal.text);
        if (!EqualsNoCaseAt(position, text.Length(), text)) continue;
        value = literal.value;
        position += text.Length();
        return true;
    }
    return false;
}

bool String::ScanFloat(float& value, std::uint32_t& position) const {
    const std::uint32_t length = Length();
    if (position >= length) return false;
    const CFPointer<CFNumberFormatterRef> formatter(
        CFNumberFormatterCreate(kCFAllocatorDefault, nullptr, kCFNumberFormatterNoStyle));
    CFRange range = CFRangeMake(position, length - position);
    const bool read =
        CFNumberFormatterGetValueFromString(formatter.Get(), CFString(), &range, kCFNumberFloat32Type, &value);
    position = static_cast<std::uint32_t>(range.location + range.length);
    return read;
}

bool String::ScanUInt64(std::uint64_t& value, std::uint32_t& position) const {
    UnitWindow units(CFString());
    return ScanDigits([&](std::uint32_t index) { return units[index]; }, Length(), value, position);
}

bool String::ScanUInt32(std::uint32_t& value, std::uint32_t& position) const {
    return ScanNarrow([&](std::uint64_t& wide) { return ScanUInt64(wide, position); }, value);
}

}  // namespace ZEMA
