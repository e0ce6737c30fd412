#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

CFStringRef Decoded(const std::vector<UInt8>& bytes, CFStringEncoding encoding) {
    return CFStringCreateWithBytes(nullptr, bytes.data(), static_cast<CFIndex>(bytes.size()), encoding, false);
}

TEST(CFStringCreateWithBytes, DecodesAsMeasured) {
    for (const Json& row : VectorsOf("decode.json")) {
        SCOPED_TRACE(row.dump());
        const Text text(Decoded(BytesFromHex(row["bytes"]), EncodingOf(row)));
        ASSERT_EQ(text != nullptr, row["ok"].get<bool>());
        if (!text) continue;
        EXPECT_EQ(UnitsOf(text.get()), row.contains("text") ? UnitsOf(row["text"]) : UnitsOf(row["units"]));
    }
}

// Every sequence of two bytes, with a third behind each first byte of three, against what UTF-8 allows.
TEST(CFStringCreateWithBytes, AcceptsExactlyTheShortForms) {
    const auto isFollower = [](unsigned byte) { return byte >= 0x80 && byte < 0xC0; };
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            std::vector<UInt8> bytes = {static_cast<UInt8>(first), static_cast<UInt8>(second)};
            const bool isLong = first >= 0xE0 && first < 0xF0;
            if (isLong) bytes.push_back(0x80);
            const unsigned codePoint = (first & 0x0F) << 12 | (second & 0x3F) << 6;
            const bool isText = isLong ? isFollower(second) && codePoint >= 0x800 && (codePoint & 0xF800) != 0xD800
                                : first < 0x80 ? second < 0x80
                                               : first >= 0xC2 && first < 0xE0 && isFollower(second);
            EXPECT_EQ(Text(Decoded(bytes, kCFStringEncodingUTF8)) != nullptr, isText) << first << " " << second;
        }
    }
}

void CheckCString(const Json& row, CFStringRef text) {
    std::vector<char> buffer(row["capacity"].get<std::size_t>(), '#');
    const bool isWritten =
        CFStringGetCString(text, buffer.data(), static_cast<CFIndex>(buffer.size()), EncodingOf(row));
    ASSERT_EQ(isWritten, row["ok"].get<bool>());
    if (isWritten) {
        const std::vector<UInt8> expected = BytesFromHex(row["bytes_with_nul"]);
        EXPECT_EQ(std::string(buffer.data(), expected.size()), std::string(expected.begin(), expected.end()));
    } else if (!buffer.empty()) {
        EXPECT_EQ(buffer[0], '\0');
    }
}

void CheckBytes(const Json& row, CFStringRef text) {
    const CFRange range = row.contains("range") ? RangeOf(row["range"]) : WholeOf(text);
    const std::vector<UInt8> expected = BytesFromHex(row["bytes"]);
    std::vector<UInt8> buffer(expected.size() + 8);
    CFIndex size = -1;
    EXPECT_EQ(CFStringGetBytes(text, range, EncodingOf(row), row["loss_byte"].get<UInt8>(), false, buffer.data(),
                               static_cast<CFIndex>(buffer.size()), &size),
              row["units_converted"].get<CFIndex>());
    ASSERT_EQ(size, static_cast<CFIndex>(expected.size()));
    buffer.resize(expected.size());
    EXPECT_EQ(buffer, expected);
}

TEST(CFStringToBytes, EncodesAsMeasured) {
    for (const Json& row : VectorsOf("encode.json")) {
        SCOPED_TRACE(row.dump());
        const Text text = TextOf(row, "text");
        if (row["call"] == "get_c_string") {
            CheckCString(row, text.get());
        } else {
            CheckBytes(row, text.get());
        }
    }
}

TEST(CFStringToBytes, NeverWritesPartOfACharacter) {
    const Text text = MakeText("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    const CFIndex rows[][3] = {{0, 0, 0}, {1, 1, 1}, {2, 1, 1}, {3, 2, 3},
                               {5, 2, 3}, {6, 3, 6}, {9, 3, 6}, {10, 5, 10}};
    CFIndex size = -1;
    for (const auto& [room, units, bytes] : rows) {
        UInt8 buffer[10];
        EXPECT_EQ(
            CFStringGetBytes(text.get(), WholeOf(text.get()), kCFStringEncodingUTF8, 0, false, buffer, room, &size),
            units);
        EXPECT_EQ(size, bytes);
    }
    EXPECT_EQ(CFStringGetBytes(text.get(), WholeOf(text.get()), kCFStringEncodingUTF8, 0, false, nullptr, 0, &size), 5);
    EXPECT_EQ(size, 10);
}

}  // namespace
}  // namespace ZEMA
