#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

TEST(CFString, ChangesAsMeasured) {
    for (const Json& row : VectorsOf("misc.json")) {
        const std::string operation = row["op"];
        SCOPED_TRACE(row.dump());
        Held<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
        if (operation == "append_c_string") {
            CFStringAppend(text.get(), TextOf(row, "base").get());
            const std::vector<UInt8> bytes = BytesFromHex(row["bytes"]);
            CFStringAppendCString(text.get(), std::string(bytes.begin(), bytes.end()).c_str(), EncodingOf(row));
        } else if (operation == "append_format") {
            const unsigned long value = std::stoul(row["value_64_bit"].get<std::string>());
            CFStringAppendFormat(text.get(), nullptr, CFSTR("%u"), value);
        } else if (operation == "delete") {
            CFStringAppend(text.get(), TextOf(row, "text").get());
            CFStringDelete(text.get(), RangeOf(row["range"]));
        } else if (operation == "substring") {
            const Text whole = TextOf(row, "text");
            const Text part(CFStringCreateWithSubstring(nullptr, whole.get(), RangeOf(row["range"])));
            CFStringAppend(text.get(), part.get());
        } else {
            continue;
        }
        EXPECT_EQ(UnitsOf(text.get()), UnitsOf(row, "result"));
    }
}

TEST(CFString, OnlyACopyOfWhatChangesStandsByItself) {
    for (const char* bytes : {"abc", "caf\xC3\xA9"}) {
        const Text text = MakeText(bytes);
        const Text copy(CFStringCreateCopy(nullptr, text.get()));
        const Text whole(CFStringCreateWithSubstring(nullptr, text.get(), WholeOf(text.get())));
        EXPECT_TRUE(copy == text && whole == text);
        EXPECT_EQ(CFGetRetainCount(text.get()), 3);
        const Held<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, text.get()));
        const Text fixed(CFStringCreateCopy(nullptr, changing.get()));
        CFStringAppend(changing.get(), changing.get());
        EXPECT_EQ(CFGetRetainCount(text.get()), 3);
        EXPECT_TRUE(CFEqual(fixed.get(), text.get()));
        EXPECT_TRUE(CFEqual(changing.get(), MakeText(std::string(bytes) + bytes).get()));
    }
}

TEST(CFString, TheEmptyTextIsOneConstant) {
    const CFStringRef empty = CFSTR("");
    const CFIndex count = CFGetRetainCount(empty);
    EXPECT_GT(count, 1'000'000);
    const UInt8 mark[] = {0xEF, 0xBB, 0xBF};
    const Held<CFMutableStringRef> changing(CFStringCreateMutable(nullptr, 0));
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, mark, 3, kCFStringEncodingUTF8, false), empty);
    EXPECT_EQ(CFStringCreateWithSubstring(nullptr, CFSTR("ab"), {1, 0}), empty);
    EXPECT_EQ(CFStringCreateCopy(nullptr, changing.get()), empty);
    for (int i = 0; i < 100; ++i) CFRelease(empty);
    EXPECT_EQ(CFGetRetainCount(empty), count);
}

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
    const CFIndex rows[][3] = {{0, 0, 0}, {2, 1, 1}, {5, 2, 3}, {9, 3, 6}, {10, 5, 10}};
    for (const auto& [room, units, bytes] : rows) {
        UInt8 buffer[10];
        CFIndex size = -1;
        const CFRange all = WholeOf(text.get());
        EXPECT_EQ(CFStringGetBytes(text.get(), all, kCFStringEncodingUTF8, 0, false, buffer, room, &size), units);
        EXPECT_EQ(size, bytes);
    }
}

TEST(CFStringCompare, OrdersAsMeasured) {
    for (const Json& row : VectorsOf("compare.json")) {
        SCOPED_TRACE(row.dump());
        const Text a = TextOf(row, "a");
        const Text b = TextOf(row, "b");
        const CFRange range = row.contains("range") ? RangeOf(row["range"]) : WholeOf(a.get());
        const int plain = row["plain"];
        const int noCase = row["nocase"];
        EXPECT_EQ(CFStringCompareWithOptions(a.get(), b.get(), range, 0), plain);
        EXPECT_EQ(CFStringCompareWithOptions(a.get(), b.get(), range, kCFCompareCaseInsensitive), noCase);
        if (row.contains("range")) continue;
        EXPECT_EQ(CFStringCompare(a.get(), b.get(), 0), plain);
        EXPECT_EQ(CFStringCompare(a.get(), b.get(), kCFCompareCaseInsensitive), noCase);
        EXPECT_EQ(CFStringCompare(b.get(), a.get(), 0), -plain);
        EXPECT_EQ(CFStringCompare(b.get(), a.get(), kCFCompareCaseInsensitive), -noCase);
        EXPECT_EQ(CFEqual(a.get(), b.get()), row["equal"].get<bool>());
    }
}

// A changing text keeps 16-bit units once it has had any; what it says counts, not how it is kept.
TEST(CFStringCompare, DoesNotDependOnHowATextIsKept) {
    const Held<CFMutableStringRef> wide(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(wide.get(), MakeText("Abc\xC3\xA9").get());
    CFStringDelete(wide.get(), {3, 1});
    const Text narrow = MakeText("Abc");
    EXPECT_TRUE(CFEqual(wide.get(), narrow.get()));
    EXPECT_EQ(CFHash(wide.get()), CFHash(narrow.get()));
    EXPECT_EQ(CFStringCompare(narrow.get(), wide.get(), 0), kCFCompareEqualTo);
    EXPECT_EQ(CFStringCompare(wide.get(), MakeText("aBC").get(), kCFCompareCaseInsensitive), kCFCompareEqualTo);
    CFRange found = {};
    EXPECT_TRUE(CFStringFindWithOptions(wide.get(), MakeText("bc").get(), {0, 3}, 0, &found));
    EXPECT_EQ(found.location, 1);
}

TEST(CFStringFind, FindsAsMeasured) {
    for (const Json& row : VectorsOf("find.json")) {
        SCOPED_TRACE(row.dump());
        const Text text = TextOf(row, "text");
        const CFIndex start = row["start"];
        const CFRange range = {start, row.value("range_length", CFStringGetLength(text.get()) - start)};
        CFRange found = {-7, -7};
        bool isFound;
        if (row["op"] == "find") {
            const CFStringCompareFlags options{row["options"] == "nocase" ? kCFCompareCaseInsensitive : 0UL};
            const Text needle = TextOf(row, "needle");
            isFound = CFStringFindWithOptions(text.get(), needle.get(), range, options, &found);
        } else {
            const Held<CFCharacterSetRef> set(
                CFCharacterSetCreateWithCharactersInString(nullptr, TextOf(row, "set").get()));
            isFound = CFStringFindCharacterFromSet(text.get(), set.get(), range, 0, &found);
        }
        EXPECT_EQ(isFound, row["found"].get<bool>());
        // A result that is passed in stays as it is when nothing is found.
        EXPECT_EQ(found.location, row.value("location", -7));
        EXPECT_EQ(found.length, row.value("length", -7));
    }
    // Letters beyond ASCII, the larger one first.
    const Held<CFCharacterSetRef> set(CFCharacterSetCreateWithCharactersInString(nullptr, MakeText("€é").get()));
    CFRange found = {};
    EXPECT_TRUE(CFStringFindCharacterFromSet(MakeText("é").get(), set.get(), {0, 1}, 0, &found));
    EXPECT_TRUE(CFStringFindCharacterFromSet(MakeText("€").get(), set.get(), {0, 1}, 0, &found));
}

TEST(CFStringSplit, CutsAsMeasured) {
    for (const Json& row : VectorsOf("split.json")) {
        SCOPED_TRACE(row.dump());
        const Text text = TextOf(row, "text");
        const Text separator = TextOf(row, "separator");
        const Held<CFArrayRef> pieces(CFStringCreateArrayBySeparatingStrings(nullptr, text.get(), separator.get()));
        std::vector<Units> expected;
        for (const Json& piece : row.contains("pieces") ? row["pieces"] : row["pieces_units"]) {
            expected.push_back(UnitsOf(piece));
        }
        EXPECT_EQ(PiecesOf(pieces.get()), expected);
    }
}

// ASCII, then not, then empty, then ASCII again: each step moves to or stays in another form.
TEST(CFString, KeepsItsTextWhileItsFormChanges) {
    const Held<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCString(text.get(), "a", kCFStringEncodingASCII);
    CFStringAppend(text.get(), MakeText(Units{'b', 0x20AC}).get());
    CFStringAppend(text.get(), CFSTR("c"));
    EXPECT_EQ(UnitsOf(text.get()), (Units{'a', 'b', 0x20AC, 'c'}));
    CFStringDelete(text.get(), {1, 2});
    EXPECT_EQ(UnitsOf(text.get()), (Units{'a', 'c'}));
    CFStringDelete(text.get(), {0, 2});
    CFStringAppend(text.get(), CFSTR("d"));
    EXPECT_TRUE(CFEqual(text.get(), CFSTR("d")));
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

}  // namespace
}  // namespace ZEMA
