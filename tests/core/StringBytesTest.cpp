#include <gtest/gtest.h>

#include <string>

#include "core/String.h"
#include "tests/core/Utf8.h"

namespace ZEMA {
namespace {

constexpr auto kUtf8 = TextEncoding::Utf8;
constexpr auto kBig = TextEncoding::Utf16BigEndian;
constexpr auto kLittle = TextEncoding::Utf16LittleEndian;
constexpr auto kUnknown = static_cast<TextEncoding>(3);

String Decoded(TextEncoding encoding, std::string_view bytes, std::uint32_t count) {
    String text("before");
    text.FromBytes(encoding, bytes.data(), count);
    return text;
}

std::u16string UnitsOf(const String& text) {
    std::u16string units;
    for (std::uint32_t index = 0; index < text.Length(); ++index) {
        units += static_cast<char16_t>(CFStringGetCharacterAtIndex(text.CFString(), index));
    }
    return units;
}

TEST(StringBytes, DecodesWithoutOneTerminator) {
    using namespace std::string_view_literals;
    const struct {
        const char* what;
        TextEncoding encoding;
        std::string_view bytes;
        std::uint32_t count;
        std::u16string_view units;
    } rows[] = {
        {"zero byte at the end", kUtf8, "ab\0"sv, 3, u"ab"sv},
        {"two of them", kUtf8, "ab\0\0"sv, 4, u"ab\0"sv},
        {"a zero byte alone", kUtf8, "\0"sv, 1, u""sv},
        {"zero byte inside", kUtf8, "a\0b"sv, 3, u"a\0b"sv},
        {"no terminator", kUtf8, "\xC3\xA9"sv, 2, u"\u00E9"sv},
        {"not UTF-8", kUtf8, "ab\xFF"sv, 3, u""sv},
        {"nothing", kUtf8, "ab"sv, 0, u""sv},
        {"big-endian", kBig, "\0a\x20\xAC\0\0"sv, 3, u"a\u20AC"sv},
        {"big-endian, a unit that ends in zero", kBig, "\0a\x01\0"sv, 2, u"a\u0100"sv},
        {"little-endian", kLittle, "a\0\xAC\x20"sv, 2, u"a\u20AC"sv},
        {"little-endian, a unit that starts with zero", kLittle, "a\0\0\x01"sv, 2, u"a\u0100"sv},
        {"little-endian, terminator alone", kLittle, "\0\0"sv, 1, u""sv},
        {"unknown encoding", kUnknown, "ab"sv, 2, u""sv},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(UnitsOf(Decoded(row.encoding, row.bytes, row.count)), row.units);
    }
}

TEST(StringBytes, EncodesIntoTheRoomThatIsPromised) {
    using namespace std::string_view_literals;
    const struct {
        const char* what;
        String text;
        TextEncoding encoding;
        std::string_view bytes;
        std::uint32_t capacity;
    } rows[] = {
        {"UTF-8", Text("a\xE2\x82\xAC"), kUtf8, "a\xE2\x82\xAC"sv, ((6 * 2 + 2) | 32) - 1},
        {"UTF-8, longer", Text("0123456789"), kUtf8, "0123456789"sv, ((6 * 10 + 2) | 32) - 1},
        {"UTF-8 ends at a zero unit", Decoded(kUtf8, "a\0b"sv, 3), kUtf8, "a"sv, ((6 * 3 + 2) | 32) - 1},
        {"half a pair is no UTF-8", Decoded(kBig, "\0a\xD8\x3D"sv, 2), kUtf8, ""sv, ((6 * 2 + 2) | 32) - 1},
        {"half a pair is a unit", Decoded(kBig, "\0a\xD8\x3D"sv, 2), kBig, "\0a\xD8\x3D"sv, ((2 * 2 + 2) | 32) - 1},
        {"big-endian", Text("a\xE2\x82\xAC"), kBig, "\0a\x20\xAC"sv, ((2 * 2 + 2) | 32) - 1},
        {"little-endian", Text("a\xE2\x82\xAC"), kLittle, "a\0\xAC\x20"sv, ((2 * 2 + 2) | 32) - 1},
        {"empty", String(), kUtf8, ""sv, 34},
        {"unknown encoding", Text("abc"), kUnknown, ""sv, 34},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const AString bytes = row.text.ToAString(row.encoding);
        EXPECT_EQ(bytes, row.bytes);
        EXPECT_EQ(bytes.Capacity(), row.capacity);
        const bool isWide = row.encoding == kBig || row.encoding == kLittle;
        EXPECT_EQ(bytes.Data()[bytes.Length() + (isWide ? 1 : 0)], 0);
    }
    EXPECT_EQ(Text("abcdef").ToAString(kLittle, 4, npos), "e\0f\0"sv);
    EXPECT_EQ(Text("abcdef").ToAString(kBig, 7, npos).Capacity(), 34U);
}

}  // namespace
}  // namespace ZEMA
