// Texts that can change.
#include <CoreFoundation/CFString.h>

#include <charconv>
#include <cstdarg>
#include <limits>
#include <memory>
#include <new>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

MutableText& Changing(CFMutableStringRef text) {
    Require(Checked(text, Type::String).form & __CFString::kMutable);
    return static_cast<MutableText&>(*text);
}

void AppendUnits(MutableText& text, TextView appended) {
    appended.Visit([&](auto units) { text.Append(units); });
}

void AppendNumber(MutableText& text, unsigned number) {
    char digits[std::numeric_limits<unsigned>::digits10 + 1];
    const char* end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    text.Append(std::span<const char>(digits, end));
}

void CheckLength(std::size_t length, std::size_t appended) {
    if (appended > kMaximumLength - length) throw std::bad_alloc();
}

}  // namespace

void MutableText::Append(std::span<const char> units) {
    CheckLength(length, units.size());
    if (IsWide()) {
        wide.insert(wide.end(), units.begin(), units.end());
    } else {
        narrow.append(units.data(), units.size());
    }
    length += static_cast<std::uint32_t>(units.size());
}

void MutableText::Append(std::span<const UniChar> units) {
    CheckLength(length, units.size());
    if (!IsWide()) {
        if (IsAscii(units)) {
            narrow.insert(narrow.end(), units.begin(), units.end());
            length = static_cast<std::uint32_t>(narrow.size());
            return;
        }
        wide.reserve(length + units.size());
        wide.assign(narrow.begin(), narrow.end());
        std::string().swap(narrow);
    }
    wide.insert(wide.end(), units.begin(), units.end());
    length = static_cast<std::uint32_t>(wide.size());
}

void MutableText::Delete(std::size_t position, std::size_t count) {
    if (IsWide()) {
        const auto start = wide.begin() + static_cast<std::ptrdiff_t>(position);
        wide.erase(start, start + static_cast<std::ptrdiff_t>(count));
    } else {
        narrow.erase(position, count);
    }
    length -= static_cast<std::uint32_t>(count);
}

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex) {
    return new MutableText;
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef text) {
    const TextView source = ViewOf(text);
    auto copy = std::make_unique<MutableText>();
    AppendUnits(*copy, source);
    return copy.release();
}

void CFStringAppend(CFMutableStringRef text, CFStringRef appended) {
    MutableText& target = Changing(text);
    if (text != appended) return AppendUnits(target, ViewOf(appended));
    // The units would move away while they are being copied.
    const Owned<__CFString> copy(CFStringCreateCopy(kCFAllocatorDefault, appended));
    AppendUnits(target, ViewOf(copy.get()));
}

void CFStringAppendCString(CFMutableStringRef text, const char* bytes, CFStringEncoding encoding) {
    MutableText& target = Changing(text);
    const Owned<__CFString> appended(CFStringCreateWithCString(kCFAllocatorDefault, bytes, encoding));
    if (appended) AppendUnits(target, ViewOf(appended.get()));
}

void CFStringAppendFormat(CFMutableStringRef text, CFDictionaryRef, CFStringRef format, ...) {
    Require(CFEqual(format, CFSTR("%u")));
    std::va_list arguments;
    va_start(arguments, format);
    const unsigned number = va_arg(arguments, unsigned);
    va_end(arguments);
    AppendNumber(Changing(text), number);
}

void CFStringDelete(CFMutableStringRef text, CFRange range) {
    const TextView part = ViewOf(text, range);
    Changing(text).Delete(static_cast<std::size_t>(range.location), part.Length());
}
