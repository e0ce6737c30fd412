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
        } else if (row["op"] == "array_contains") {
            const auto array = ArrayOf(row["values"]);
            const Text value = TextOf(row, "value");
            const Held<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, value.get()));
            EXPECT_EQ(CFArrayContainsValue(array.get(), All(array.get()), changing.get()), row["result"].get<bool>());
        }
    }
}

TEST(CFArray, KeepsItsElementsAliveWhenToldTo) {
    const Text text = MakeText("kept");
    const void* values[] = {text.get(), text.get()};
    {
        const Held<CFArrayRef> fixed(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
        const Held<CFArrayRef> addresses(CFArrayCreate(nullptr, values, 2, nullptr));
        EXPECT_EQ(CFGetRetainCount(text.get()), 3);
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

}  // namespace
}  // namespace ZEMA
