#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

CFComparisonResult CompareTexts(const void* value1, const void* value2, void*) {
    return CFStringCompare(static_cast<CFStringRef>(value1), static_cast<CFStringRef>(value2), 0);
}

Held<CFMutableArrayRef> ArrayOf(const Json& texts) {
    Held<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 1, &kCFTypeArrayCallBacks));
    for (const Json& text : texts) CFArrayAppendValue(array.get(), MakeText(UnitsOf(text)).get());
    return array;
}

CFRange All(CFArrayRef array) {
    return {0, CFArrayGetCount(array)};
}

TEST(CFArray, SortsAndSearchesAsMeasured) {
    for (const Json& row : VectorsOf("misc.json")) {
        SCOPED_TRACE(row.dump());
        if (row["op"] == "sort_plain") {
            const auto array = ArrayOf(row["values"]);
            CFArraySortValues(array.get(), All(array.get()), CompareTexts, nullptr);
            EXPECT_EQ(PiecesOf(array.get()), PiecesOf(ArrayOf(row["result"]).get()));
            EXPECT_TRUE(CFEqual(array.get(), ArrayOf(row["result"]).get()));
        } else if (row["op"] == "array_contains") {
            const auto array = ArrayOf(row["values"]);
            const Text value = TextOf(row, "value");
            EXPECT_EQ(CFArrayContainsValue(array.get(), All(array.get()), value.get()), row["result"].get<bool>());
            const Held<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, value.get()));
            EXPECT_EQ(CFArrayContainsValue(array.get(), All(array.get()), changing.get()), row["result"].get<bool>());
        }
    }
}

TEST(CFArray, KeepsItsElementsAlive) {
    const Text text = MakeText("kept");
    const void* values[] = {text.get(), text.get()};
    {
        const Held<CFArrayRef> fixed(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
        const auto changing = MakeArray({});
        CFArrayAppendValue(changing.get(), text.get());
        EXPECT_EQ(CFGetRetainCount(text.get()), 4);
        EXPECT_EQ(CFArrayGetValueAtIndex(changing.get(), 0), text.get());
        EXPECT_EQ(CFGetRetainCount(text.get()), 4);
        const Held<CFArrayRef> addresses(CFArrayCreate(nullptr, values, 2, nullptr));
        EXPECT_EQ(CFGetRetainCount(text.get()), 4);
        EXPECT_TRUE(CFArrayContainsValue(addresses.get(), {0, 2}, text.get()));
        EXPECT_FALSE(CFArrayContainsValue(addresses.get(), {0, 2}, MakeText("kept").get()));
    }
    EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

TEST(CFArray, LooksAtTheGivenRangeOnly) {
    const auto array = MakeArray({"c", "b", "a", "b"});
    const Text b = MakeText("b");
    EXPECT_FALSE(CFArrayContainsValue(array.get(), {2, 1}, b.get()));
    EXPECT_FALSE(CFArrayContainsValue(array.get(), {4, 0}, b.get()));
    EXPECT_TRUE(CFArrayContainsValue(array.get(), {2, 2}, b.get()));
    CFArraySortValues(array.get(), {0, 3}, CompareTexts, nullptr);
    EXPECT_TRUE(CFEqual(array.get(), MakeArray({"a", "b", "c", "b"}).get()));
}

TEST(CFArray, SortingKeepsTheOrderOfEqualValues) {
    const auto sameLength = [](const void* value1, const void* value2, void*) {
        const CFIndex difference =
            CFStringGetLength(static_cast<CFStringRef>(value1)) - CFStringGetLength(static_cast<CFStringRef>(value2));
        return difference < 0 ? kCFCompareLessThan : difference > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
    };
    const auto array = MakeArray({"bb", "b", "aa", "a", "cc"});
    CFArraySortValues(array.get(), {0, 5}, sameLength, nullptr);
    EXPECT_TRUE(CFEqual(array.get(), MakeArray({"b", "a", "bb", "aa", "cc"}).get()));
}

}  // namespace
}  // namespace ZEMA
