// From units to bytes.
#include <algorithm>
#include <cstring>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

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
