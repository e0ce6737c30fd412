// Scanners and decoders of the platform layer on any bytes: texts in all encodings, numbers, paths, days, identifiers.
#include <CoreFoundation/CoreFoundation.h>

#include <cfloat>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "core/ByteText.h"
#include "core/NumberScan.h"
#include "core/String.h"
#include "fuzz/Fuzzing.h"
#include "host/system/Utf8Text.h"
#include "loader/Version.h"
#include "platform/DecimalNumber.h"
#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSDate.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;
using fuzzing::Require;
using Text = CFPointer<CFStringRef>;

constexpr CFStringEncoding kEncodings[] = {kCFStringEncodingASCII, kCFStringEncodingUTF8, kCFStringEncodingUTF16BE,
                                           kCFStringEncodingUTF16LE};

Text Decode(std::string_view bytes, CFStringEncoding encoding, bool external = false) {
    return Text(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                        static_cast<CFIndex>(bytes.size()), encoding, external));
}

std::optional<std::string> Encode(CFStringRef text, CFStringEncoding encoding) {
    const CFRange all{0, CFStringGetLength(text)};
    CFIndex size = 0;
    if (CFStringGetBytes(text, all, encoding, 0, false, nullptr, 0, &size) != all.length) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    CFIndex used = 0;
    CFStringGetBytes(text, all, encoding, 0, false, reinterpret_cast<UInt8*>(bytes.data()), size, &used);
    Require(used == size, "as much is written as was counted");
    return bytes;
}

bool AreEqual(CFStringRef a, CFStringRef b) {
    const bool equal = CFStringCompare(a, b, 0) == kCFCompareEqualTo;
    Require(equal == (CFEqual(a, b) != 0) && (!equal || CFHash(a) == CFHash(b)), "equal texts have one hash");
    return equal;
}

void ExamineEncodings(std::string_view bytes) {
    for (const CFStringEncoding encoding : kEncodings) {
        static_cast<void>(Decode(bytes, encoding, true));
        const Text text = Decode(bytes, encoding);
        if (encoding == kCFStringEncodingUTF8) {
            Require(bool(text) == IsUtf8(bytes), "UTF-8 is read as strictly as it is told apart");
        }
        if (!text) continue;
        for (const CFStringEncoding other : kEncodings) {
            const std::optional<std::string> encoded = Encode(text.Get(), other);
            // A mark in front would be dropped in UTF-8, and a single byte is no UTF-16.
            if (!encoded || (other == kCFStringEncodingUTF8 && encoded->starts_with("\xEF\xBB\xBF"))) continue;
            const Text again = Decode(*encoded, other);
            Require(again && AreEqual(again.Get(), text.Get()), "what was encoded decodes to the same text");
        }
        const Text copy(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text.Get()));
        Require(AreEqual(copy.Get(), text.Get()) && IsUtf8(Utf8Of(text.Get())), "copies are equal and print as UTF-8");
    }
}

void ExamineComparison(const String& a, const String& b) {
    const int order = a.CompareNoCase(0, npos, b, 0, npos), reverse = b.CompareNoCase(0, npos, a, 0, npos);
    Require((order < 0) == (reverse > 0) && (order == 0) == (reverse == 0), "case or not, order has two directions");
    Require(a.LessNoCase(b) == (order < 0), "less is less");
    Require(!(a == b) || order == 0, "equal texts are so without regard to case");
    const std::uint32_t position = a.FindNoCase(b);
    if (position != npos) Require(position < std::max(a.Length(), 1u), "a match lies in the text");
    if (order == 0 && !b.IsEmpty()) Require(position == 0, "what is equal but for case is found in front");
    for (const bool byText : {false, true}) {
        BasicArray<String> pieces;
        if (byText && b.IsEmpty()) continue;
        byText ? a.Split(b, pieces) : a.Split('/', pieces);
        String joined;
        for (std::size_t i = 0; i < pieces.Size(); ++i) {
            if (i > 0) joined.Append(byText ? b : String("/"));
            joined.Append(pieces[i]);
        }
        const bool isSeparator = a == (byText ? b : String("/"));  // which is one empty piece
        Require(isSeparator || joined == a, "pieces and separators are the text");
    }
}

template <class T>
void CompareScans(bool (String::*scan)(T&, std::uint32_t&) const,
                  bool (*scanAscii)(std::string_view, T&, std::uint32_t&), const String& text, std::string_view bytes,
                  std::uint32_t start) {
    T a{}, b{};
    std::uint32_t p = start, q = start;
    const bool scanned = (text.*scan)(a, p);
    Require(scanned == scanAscii(bytes, b, q) && p == q && std::memcmp(&a, &b, sizeof a) == 0,
            "both scans read the same");
}

void ExamineScans(std::string_view bytes, std::uint32_t start) {
    const String text = FromUtf8(bytes);
    if (IsAscii(bytes) && bytes.find('\0') == std::string_view::npos) {
        CompareScans(&String::ScanBool, ScanBool, text, bytes, start);
        CompareScans(&String::ScanFloat, ScanFloat, text, bytes, start);
        CompareScans(&String::ScanUInt64, ScanUInt64, text, bytes, start);
        CompareScans(&String::ScanUInt32, ScanUInt32, text, bytes, start);
    } else {
        float number = 0;
        std::uint64_t integer = 0;
        std::uint32_t position = start;
        static_cast<void>(text.ScanFloat(number, position));
        static_cast<void>(text.ScanUInt64(integer, position));
    }
    Version version;
    std::uint32_t position = 0;
    if (!version.ParseFrom(text, position)) return;
    String written;
    version.AppendTo(written);
    Version again;
    position = 0;
    Require(again.ParseFrom(written, position) && again == version, "a version that is written reads back");
}

// Against the C library, which reads more than we do and must agree on what both read.
void ExamineNumbers(const std::string& text) {
    const DecimalNumber number = ReadDecimal(text);
    Require(number.end <= text.size(), "a number ends in the text");
    const std::string read = text.substr(0, number.end);
    char* end = nullptr;
    const double expected = std::strtod(read.c_str(), &end);
    if (number.value) {
        Require(end == read.c_str() + read.size(), "all that is used up is the number");
        Require(static_cast<float>(expected) == *number.value, "a number is read as the C library reads it");
    }
    const char* behind = nullptr;
    const float parsed = ParseFloat(text.c_str(), &behind);
    const float standard = std::strtof(text.c_str(), &end);
    Require(behind == end && (parsed == standard || (std::isnan(parsed) && std::isnan(standard))),
            "numbers of bytes are those of the C library");
    for (const int base : {0, 2, 10, 16, 36, 37}) {
        static_cast<void>(ParseUInt32(text.c_str(), &behind, base));
        Require(behind >= text.c_str() && behind <= text.c_str() + text.size(), "a whole number ends in the text");
    }
}

void ExaminePaths(CFStringRef path, CFStringRef component) {
    const CFPointer<CFArrayRef> parts = Foundation::pathComponents(path);
    const Text joined = Foundation::pathWithComponents(parts.Get());
    Require(
        AreEqual(Foundation::pathWithComponents(Foundation::pathComponents(joined.Get()).Get()).Get(), joined.Get()),
        "a path that is made of components stays");
    const Text standard = Foundation::stringByStandardizingPath(path);
    Require(AreEqual(Foundation::stringByStandardizingPath(standard.Get()).Get(), standard.Get()),
            "a path is standardised once");
    const Text longer = Foundation::stringByAppendingPathComponent(path, component);
    Require(CFStringGetLength(longer.Get()) <= CFStringGetLength(path) + CFStringGetLength(component) + 1,
            "a component is appended by one separator");
    if (const std::optional<std::string> bytes = Foundation::FileSystemRepresentation(path)) {
        const Text again = Foundation::StringWithFileSystemRepresentation(*bytes);
        Require(again && AreEqual(again.Get(), path), "a path's bytes are the path");
    }
}

void ExamineDays(fuzzing::Choices choices) {
    Foundation::NSDateComponents day;
    const auto number = [&choices] {
        std::uint64_t bits = 0;
        for (std::size_t count = choices.Below(9); count > 0; --count) bits = bits << 8 | choices.Byte();
        return static_cast<Foundation::NSInteger>(bits);
    };
    day.setYear(number()), day.setMonth(number()), day.setDay(number());
    const auto date = Foundation::NSCalendar(Foundation::NSGregorianCalendar).dateFromComponents(day);
    if (date) Require(std::isfinite(date->timeIntervalSince1970()), "a day is a point in time");
    const auto seconds = static_cast<double>(number());
    const Foundation::NSDate any(std::ldexp(seconds, static_cast<int>(choices.Below(64)) - 32));
    const std::timespec time = any.timespec();
    Require(time.tv_nsec >= 0 && time.tv_nsec < 1'000'000'000, "a time has fewer nanoseconds than a second");
}

void ExamineIdentifiers(CFStringRef text) {
    const CFPointer<CFUUIDRef> identifier(CFUUIDCreateFromString(kCFAllocatorDefault, text));
    Require(bool(identifier) == (CFStringGetLength(text) != 0), "every text names an identifier, but the empty one");
    if (!identifier) return;
    const CFPointer<CFUUIDRef> same(
        CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, CFUUIDGetUUIDBytes(identifier.Get())));
    Require(same.Get() == identifier.Get(), "of equal identifiers there is one");
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const std::string_view bytes = fuzzing::TextOf(data, size);
    ExamineEncodings(bytes);
    const std::string_view front = bytes.substr(0, size / 3), back = bytes.substr(size / 3);
    ExamineComparison(FromUtf8(front), FromUtf8(back));
    Require(IsUtf8(ReplaceInvalidUtf8(bytes)) && IsUtf8(EscapeControls(ReplaceInvalidUtf8(bytes))), "UTF-8 comes out");
    ExamineScans(back, front.empty() ? 0u : static_cast<unsigned char>(front[0]) % 8u);
    ExamineNumbers(std::string(back));
    ExaminePaths(FromUtf8(front).CFString(), FromUtf8(back).CFString());
    ExamineDays(fuzzing::Choices(bytes));
    ExamineIdentifiers(FromUtf8(back).CFString());
    return 0;
}
