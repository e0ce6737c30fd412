// From bytes to units.
#include <algorithm>
#include <cstring>
#include <new>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

constexpr UInt8 kByteOrderMark[] = {0xEF, 0xBB, 0xBF};

constexpr char32_t kInvalid = 0xFFFFFFFF;

// The shortest sequences of RFC 3629 by their first byte: how many bytes follow, the first byte's bits, and the range
// of the second byte, which keeps out overlong forms, surrogates and what lies above U+10FFFF.
struct Sequence {
    UInt8 first, last;
    UInt8 followers;
    UInt8 bits;
    UInt8 lowSecond, highSecond;
};
constexpr Sequence kSequences[] = {
    {0xC2, 0xDF, 1, 0x1F, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0x0F, 0xA0, 0xBF}, {0xE1, 0xEC, 2, 0x0F, 0x80, 0xBF},
    {0xED, 0xED, 2, 0x0F, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x0F, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x07, 0x90, 0xBF},
    {0xF1, 0xF3, 3, 0x07, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x07, 0x80, 0x8F},
};

// Takes one code point from the front of `bytes`, which is not empty.
char32_t NextUtf8(std::span<const UInt8>& bytes) {
    const UInt8 first = bytes[0];
    if (first < 0x80) {
        bytes = bytes.subspan(1);
        return first;
    }
    const auto sequence = std::ranges::find_if(kSequences, [&](const Sequence& s) { return first <= s.last; });
    if (sequence == std::end(kSequences) || first < sequence->first || bytes.size() <= sequence->followers) {
        return kInvalid;
    }
    if (bytes[1] < sequence->lowSecond || bytes[1] > sequence->highSecond) return kInvalid;
    char32_t codePoint = first & sequence->bits;
    for (const UInt8 byte : bytes.subspan(1, sequence->followers)) {
        if ((byte & 0xC0) != 0x80) return kInvalid;
        codePoint = (codePoint << 6) | (byte & 0x3Fu);
    }
    bytes = bytes.subspan(sequence->followers + 1u);
    return codePoint;
}

CFStringRef DecodeAscii(std::span<const UInt8> bytes) {
    const NewUnits<char> made = NewNarrowText(bytes.size());
    std::memcpy(made.units, bytes.data(), bytes.size());
    return made.text;
}

CFStringRef DecodeLatin1(std::span<const UInt8> bytes) {
    const NewUnits<UniChar> made = NewWideText(bytes.size());
    std::ranges::copy(bytes, made.units);
    return made.text;
}

CFStringRef DecodeUtf8(std::span<const UInt8> bytes) {
    if (bytes.size() >= 3 && std::memcmp(bytes.data(), kByteOrderMark, 3) == 0) bytes = bytes.subspan(3);
    if (bytes.empty()) return EmptyText();
    if (IsAscii(bytes)) return DecodeAscii(bytes);

    std::size_t length = 0;
    for (std::span<const UInt8> rest = bytes; !rest.empty();) {
        const char32_t codePoint = NextUtf8(rest);
        if (codePoint == kInvalid) return nullptr;
        length += codePoint > 0xFFFF ? 2 : 1;
    }
    const NewUnits<UniChar> made = NewWideText(length);
    UniChar* unit = made.units;
    while (!bytes.empty()) {
        const char32_t codePoint = NextUtf8(bytes);
        if (codePoint > 0xFFFF) {
            *unit++ = static_cast<UniChar>(0xD800 + ((codePoint - 0x10000) >> 10));
            *unit++ = static_cast<UniChar>(0xDC00 + (codePoint & 0x3FF));
        } else {
            *unit++ = static_cast<UniChar>(codePoint);
        }
    }
    return made.text;
}

// Units may come at odd addresses and in the other byte order, and their text may turn out to be ASCII.
CFStringRef DecodeUtf16(std::span<const UInt8> bytes, std::size_t highByte) {
    if (bytes.size() < 2) return nullptr;
    if (bytes.size() / 2 > kMaximumLength) throw std::bad_alloc();
    std::vector<UniChar> units(bytes.size() / 2);
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<UniChar>((bytes[2 * i + highByte] << 8) | bytes[2 * i + 1 - highByte]);
    }
    return NewText({units.data(), units.size()});
}

}  // namespace

CFStringRef Decode(std::span<const UInt8> bytes, CFStringEncoding encoding) {
    switch (encoding) {
        case kCFStringEncodingASCII:
            return IsAscii(bytes) ? DecodeAscii(bytes) : DecodeLatin1(bytes);
        case kCFStringEncodingUTF8:
            return DecodeUtf8(bytes);
        case kCFStringEncodingUTF16BE:
            return DecodeUtf16(bytes, 0);
        case kCFStringEncodingUTF16LE:
            return DecodeUtf16(bytes, 1);
        default:
            return nullptr;
    }
}

}  // namespace ZEMA::CF
