// The scans of String: booleans, floats, unsigned integers.
#include "core/BoolLiterals.h"
#include "core/DigitScan.h"
#include "core/String.h"
#include "core/UnitWindow.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

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
    const Foundation::CFPointer<CFNumberFormatterRef> formatter(
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
