#include "host/system/Utf8Text.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

// How many bytes the character in front takes, or 0 when there is none (Unicode, table 3-7, well-formed UTF-8).
std::size_t CharacterSize(std::string_view bytes) {
    const std::uint8_t lead = ByteAt(bytes, 0);
    if (lead < 0x80) return 1;
    const std::size_t size = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (size == 0 || bytes.size() < size) return 0;
    // The second byte shuts out overlong forms, surrogates and what lies above U+10FFFF.
    const std::uint8_t lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (ByteAt(bytes, 1) < lowest || ByteAt(bytes, 1) > highest) return 0;
    for (std::size_t i = 2; i < size; ++i) {
        if ((ByteAt(bytes, i) & 0xC0) != 0x80) return 0;
    }
    return size;
}

void AppendEscape(std::uint8_t control, std::string& text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    text += "\\u00";
    text += kDigits[control >> 4];
    text += kDigits[control & 0xF];
}

}  // namespace

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t size = CharacterSize(bytes);
        if (size == 0) return false;
        bytes.remove_prefix(size);
    }
    return true;
}

std::string ReplaceInvalidUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t size = CharacterSize(bytes);
        text += size == 0 ? kReplacement : bytes.substr(0, size);
        bytes.remove_prefix(size == 0 ? 1 : size);
    }
    return text;
}

std::string Base64Of(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 3; ++j) group = group << 8 | (j < bytes.size() ? ByteAt(bytes, j) : 0u);
        for (int shift = 18; shift >= 0; shift -= 6) text += kDigits[group >> shift & 0x3F];
    }
    const std::size_t padding = (3 - bytes.size() % 3) % 3;
    text.replace(text.size() - padding, padding, padding, '=');
    return text;
}

std::string EscapeControls(std::string_view utf8) {
    std::string text;
    text.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const std::uint8_t byte = ByteAt(utf8, i);
        if (byte < 0x20 || byte == 0x7F) {
            AppendEscape(byte, text);
        } else if (byte == 0xC2 && i + 1 < utf8.size() && ByteAt(utf8, i + 1) < 0xA0) {
            AppendEscape(ByteAt(utf8, ++i), text);  // U+0080 to U+009F
        } else {
            text += utf8[i];
        }
    }
    return text;
}

std::string Utf8Of(CFStringRef text) {
    const CFIndex length = CFStringGetLength(text);
    std::string utf8;
    std::array<UInt8, 1024> part;
    for (CFIndex position = 0; position < length;) {
        CFIndex used = 0;
        const CFIndex converted =
            CFStringGetBytes(text, CFRangeMake(position, length - position), kCFStringEncodingUTF8, 0, false,
                             part.data(), static_cast<CFIndex>(part.size()), &used);
        utf8.append(reinterpret_cast<const char*>(part.data()), static_cast<std::size_t>(used));
        // With so much room only half a pair stops the conversion at once.
        if (converted == 0) utf8 += kReplacement;
        position += converted == 0 ? 1 : converted;
    }
    return utf8;
}

}  // namespace ZEMA
