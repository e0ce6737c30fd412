// The scans of String and those over bytes: booleans, floats, unsigned integers.
#include "core/NumberScan.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/String.h"
#include "platform/DecimalNumber.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {
namespace {

using Foundation::CFPointer;

// A text that stands for a boolean.
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

char Lower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

bool StartsWithNoCase(std::string_view text, std::string_view lowerCase) {
    return text.size() >= lowerCase.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), text.begin(), [](char a, char b) { return a == Lower(b); });
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
    // Half of the numbers of a placement are a 0 or a 1 with a comma behind it.
    if (position + 1 < text.size() && text[position + 1] == ',' &&
        IsDigit(static_cast<unsigned char>(text[position]))) {
        value = static_cast<float>(text[position] - '0');
        ++position;
        return true;
    }
    while (position < text.size() && (text[position] == ' ' || text[position] == '\t')) ++position;
    const DecimalNumber number = ReadDecimal(text.substr(position));
    position += static_cast<std::uint32_t>(number.end);
    if (number.value) value = *number.value;
    return number.value.has_value();
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
