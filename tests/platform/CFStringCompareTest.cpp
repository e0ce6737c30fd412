#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

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

}  // namespace
}  // namespace ZEMA
