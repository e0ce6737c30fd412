// The conversions of String from and to bytes.
#include <cstring>

#include "core/Exception.h"
#include "core/String.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {
namespace {

constexpr CFStringEncoding PlatformEncoding(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::Utf8:
            return kCFStringEncodingUTF8;
        case TextEncoding::Utf16BigEndian:
            return kCFStringEncodingUTF16BE;
        case TextEncoding::Utf16LittleEndian:
            return kCFStringEncodingUTF16LE;
    }
    return kCFStringEncodingInvalidId;
}

// A buffer for `size` bytes that a platform call fills.
char* MakeRoom(AString& bytes, std::uint64_t size) {
    if (size >= npos) RangeException::Throw();
    return bytes.ResizeForOverwrite(static_cast<std::uint32_t>(size));
}

AString EncodeUtf8(CFStringRef text) {
    // Twice what the longest form of a unit takes; callers may rely on the room that is left.
    constexpr std::uint64_t kRoomForUnit = 6;
    const std::uint64_t size = kRoomForUnit * static_cast<std::uint64_t>(CFStringGetLength(text)) + 1;
    AString bytes;
    char* const buffer = MakeRoom(bytes, size);
    // A failed conversion leaves the buffer empty.
    CFStringGetCString(text, buffer, static_cast<CFIndex>(size), kCFStringEncodingUTF8);
    bytes.Erase(static_cast<std::uint32_t>(std::strlen(buffer)));
    return bytes;
}

AString EncodeUtf16(CFStringRef text, CFStringEncoding encoding) {
    const CFIndex count = CFStringGetLength(text);
    const std::uint64_t size = 2 * static_cast<std::uint64_t>(count);
    AString bytes;
    char* const buffer = MakeRoom(bytes, size + 1);  // with a whole unit of zero behind the text
    CFStringGetBytes(text, CFRangeMake(0, count), encoding, 0, false, reinterpret_cast<UInt8*>(buffer),
                     static_cast<CFIndex>(size), nullptr);
    buffer[size] = 0;
    bytes.Erase(static_cast<std::uint32_t>(size));
    return bytes;
}

// The bytes of `count` units without one zero unit at their end.
CFIndex SizeWithoutTerminator(const UInt8* bytes, std::uint32_t count, CFIndex unitSize) {
    const CFIndex size = CFIndex{count} * unitSize;
    const bool isTerminated = bytes[size - 1] == 0 && bytes[size - unitSize] == 0;
    return isTerminated ? size - unitSize : size;
}

}  // namespace

AString String::ToAString(TextEncoding encoding, std::uint32_t p, std::uint32_t n) const {
    constexpr std::uint32_t kRoomOfEmptyText = 2;
    const CFStringEncoding platformEncoding = PlatformEncoding(encoding);
    const Foundation::CFPointer<CFStringRef> text(CreateCFString(p, n));
    if (CFStringGetLength(text.Get()) == 0 || platformEncoding == kCFStringEncodingInvalidId) {
        AString empty;
        empty.Reserve(kRoomOfEmptyText);
        return empty;
    }
    if (encoding == TextEncoding::Utf8) return EncodeUtf8(text.Get());
    return EncodeUtf16(text.Get(), platformEncoding);
}

void String::FromBytes(TextEncoding encoding, const void* bytes, std::uint32_t count) {
    const CFStringEncoding platformEncoding = PlatformEncoding(encoding);
    if (count == 0 || platformEncoding == kCFStringEncodingInvalidId) {
        Clear();
        return;
    }
    const auto* const first = static_cast<const UInt8*>(bytes);
    const CFIndex size = SizeWithoutTerminator(first, count, encoding == TextEncoding::Utf8 ? 1 : 2);
    Adopt(CFStringCreateWithBytes(kCFAllocatorDefault, first, size, platformEncoding, false));
}

String FromUtf8(std::string_view bytes) {
    String text;
    text.FromBytes(TextEncoding::Utf8, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return text;
}

}  // namespace ZEMA
