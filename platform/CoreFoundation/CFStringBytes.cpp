// From bytes to units and back.
#include <CoreFoundation/CFString.h>

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

// The bytes of one character; none when the encoding cannot hold it.
struct CharacterBytes {
    UInt8 bytes[4];
    std::size_t count;
};

CharacterBytes ToUtf8(char32_t codePoint) {
    const auto follower = [&](unsigned shift) { return static_cast<UInt8>(0x80 | ((codePoint >> shift) & 0x3F)); };
    const auto first = [&](unsigned mark, unsigned shift) { return static_cast<UInt8>(mark | (codePoint >> shift)); };
    if (codePoint < 0x80) return {{first(0, 0)}, 1};
    if (codePoint < 0x800) return {{first(0xC0, 6), follower(0)}, 2};
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) return {{}, 0};
    if (codePoint < 0x10000) return {{first(0xE0, 12), follower(6), follower(0)}, 3};
    return {{first(0xF0, 18), follower(12), follower(6), follower(0)}, 4};
}

CharacterBytes ToAscii(char32_t codePoint, UInt8 lossByte) {
    if (codePoint < 0x80) return {{static_cast<UInt8>(codePoint)}, 1};
    return {{lossByte}, lossByte != 0 ? 1u : 0u};
}

CharacterBytes ToUtf16(UniChar unit, bool highFirst) {
    const auto high = static_cast<UInt8>(unit >> 8);
    const auto low = static_cast<UInt8>(unit & 0xFF);
    return highFirst ? CharacterBytes{{high, low}, 2} : CharacterBytes{{low, high}, 2};
}

// Whole characters in UTF-8 and ASCII, single units in UTF-16.
struct Character {
    std::size_t unitCount;
    CharacterBytes encoded;
};
Character NextCharacter(TextView text, std::size_t position, CFStringEncoding encoding, UInt8 lossByte) {
    const UniChar unit = text[position];
    if (encoding == kCFStringEncodingUTF16BE) return {1, ToUtf16(unit, true)};
    if (encoding == kCFStringEncodingUTF16LE) return {1, ToUtf16(unit, false)};
    const bool isPair = IsHighSurrogate(unit) && position + 1 < text.Length() && IsLowSurrogate(text[position + 1]);
    const char32_t codePoint = isPair ? PairToCodePoint(unit, text[position + 1]) : unit;
    const std::size_t unitCount = isPair ? 2 : 1;
    if (encoding == kCFStringEncodingUTF8) return {unitCount, ToUtf8(codePoint)};
    if (encoding == kCFStringEncodingASCII) return {unitCount, ToAscii(codePoint, lossByte)};
    return {unitCount, {{}, 0}};
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

Encoded Encode(TextView text, CFStringEncoding encoding, UInt8 lossByte, UInt8* output, std::size_t capacity) {
    Encoded done = {0, 0};
    if (!text.IsWide() && (encoding == kCFStringEncodingUTF8 || encoding == kCFStringEncodingASCII)) {
        const std::size_t count = output ? std::min(text.Length(), capacity) : text.Length();
        if (output && count > 0) std::memcpy(output, text.Narrow().data(), count);
        return {count, count};
    }
    while (done.unitCount < text.Length()) {
        const Character next = NextCharacter(text, done.unitCount, encoding, lossByte);
        if (next.encoded.count == 0 || (output && next.encoded.count > capacity - done.byteCount)) break;
        if (output) std::memcpy(output + done.byteCount, next.encoded.bytes, next.encoded.count);
        done.byteCount += next.encoded.count;
        done.unitCount += next.unitCount;
    }
    return done;
}

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (bufferSize <= 0) return false;
    const TextView view = ViewOf(text);
    const Encoded done =
        Encode(view, encoding, 0, reinterpret_cast<UInt8*>(buffer), static_cast<std::size_t>(bufferSize) - 1);
    const bool isComplete = done.unitCount == view.Length();
    buffer[isComplete ? done.byteCount : 0] = '\0';
    return isComplete;
}

CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte, Boolean,
                         UInt8* buffer, CFIndex bufferSize, CFIndex* usedSize) {
    Require(!buffer || bufferSize >= 0);
    const Encoded done = Encode(ViewOf(text, range), encoding, lossByte, buffer, static_cast<std::size_t>(bufferSize));
    if (usedSize) *usedSize = static_cast<CFIndex>(done.byteCount);
    return static_cast<CFIndex>(done.unitCount);
}
