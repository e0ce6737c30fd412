#include <CoreFoundation/CFNumberFormatter.h>

#include "platform/CoreFoundation/StringObject.h"
#include "platform/DecimalNumber.h"

// Has no state: what is read depends on no locale.
struct __CFNumberFormatter : ZEMA::CF::Object {
    constexpr __CFNumberFormatter() : Object(ZEMA::CF::Type::NumberFormatter, 0, ZEMA::CF::kConstantBit) {}
};

namespace ZEMA::CF {
namespace {

// There are no settings, so that one formatter is all of them.
constinit __CFNumberFormatter theFormatter;

// Blanks of all scripts, but no line ends.
bool IsBlank(UniChar unit) {
    if (unit < 0x80) return unit == ' ' || unit == '\t';
    return unit == 0x00A0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200B) || unit == 0x202F || unit == 0x205F ||
           unit == 0x3000;
}

DecimalNumber DecimalIn(std::span<const char> units) {
    return ReadDecimal({units.data(), units.size()});
}

// Only what can stand in a number is copied, so that a list of short numbers costs no more than it is long.
DecimalNumber DecimalIn(std::span<const UniChar> units) {
    constexpr std::string_view kOfNumbers = "+-.0123456789eEnNaA";
    char bytes[kLongestDecimal];
    std::size_t count = 0;
    while (count < units.size() && count < kLongestDecimal && units[count] < 0x80) {
        const char byte = static_cast<char>(units[count]);
        if (kOfNumbers.find(byte) == std::string_view::npos) break;
        bytes[count++] = byte;
    }
    return ReadDecimal({bytes, count});
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
        const ZEMA::DecimalNumber number = DecimalIn(units.subspan(blankCount));
        if (range) range->length = static_cast<CFIndex>(blankCount + number.end);
        if (number.value) *static_cast<float*>(value) = *number.value;
        return number.value.has_value();
    });
}
