#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

CFIndex CountOf(CFTypeRef object) {
    return CFGetRetainCount(object);
}

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
            const std::string format = row["format"];
            const unsigned long value = std::stoul(row["value_64_bit"].get<std::string>());
            CFStringAppendFormat(text.get(), nullptr, MakeText(format).get(), value);
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

TEST(CFString, FormatsTextsAroundNumbers) {
    const Held<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    CFStringAppendFormat(text.get(), nullptr, CFSTR("100%% of %@: %u/%lu %d%"), CFSTR("\xC3\xA9"), 7u, 1ul << 40);
    EXPECT_EQ(UnitsOf(text.get()), UnitsFromUtf8("100% of \xC3\xA9: 7/1099511627776 %d%"));
}

TEST(CFString, ACopyOfWhatCannotChangeIsTheSameObject) {
    for (const char* bytes : {"abc", "caf\xC3\xA9"}) {
        const Text text = MakeText(bytes);
        const Text copy(CFStringCreateCopy(nullptr, text.get()));
        const Text whole(CFStringCreateWithSubstring(nullptr, text.get(), WholeOf(text.get())));
        EXPECT_EQ(copy.get(), text.get());
        EXPECT_EQ(whole.get(), text.get());
        EXPECT_EQ(CountOf(text.get()), 3);
        const Text part(CFStringCreateWithSubstring(nullptr, text.get(), {1, 2}));
        EXPECT_EQ(CountOf(part.get()), 1);
        EXPECT_EQ(CountOf(text.get()), 3);
    }
}

TEST(CFString, ACopyOfWhatChangesStandsByItself) {
    const Text start = MakeText("ab");
    const Held<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, start.get()));
    EXPECT_EQ(CountOf(start.get()), 1);
    EXPECT_EQ(CountOf(changing.get()), 1);
    const Text copy(CFStringCreateCopy(nullptr, changing.get()));
    EXPECT_EQ(CountOf(copy.get()), 1);
    CFStringAppend(changing.get(), CFSTR("c"));
    EXPECT_TRUE(CFEqual(copy.get(), start.get()));
    EXPECT_TRUE(CFEqual(changing.get(), CFSTR("abc")));
}

TEST(CFString, CanBeAppendedToItself) {
    const Held<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(text.get(), CFSTR("\xC3\xA9x"));
    for (int i = 0; i < 5; ++i) CFStringAppend(text.get(), text.get());
    EXPECT_EQ(CFStringGetLength(text.get()), 64);
    EXPECT_EQ(CFStringGetCharacterAtIndex(text.get(), 62), 0xE9);
}

// ASCII, then not, then empty, then ASCII again: each step moves to or stays in another form.
TEST(CFString, KeepsItsTextWhileItsFormChanges) {
    const Held<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    const UniChar units[] = {'b', 0x20AC};
    CFStringAppendCString(text.get(), "a", kCFStringEncodingASCII);
    CFStringAppendCharacters(text.get(), units, 1);
    EXPECT_STREQ(CFStringGetCStringPtr(text.get(), kCFStringEncodingUTF8), "ab");
    CFStringAppendCharacters(text.get(), units, 2);
    CFStringAppend(text.get(), CFSTR("c"));
    EXPECT_EQ(UnitsOf(text.get()), (Units{'a', 'b', 'b', 0x20AC, 'c'}));
    CFStringDelete(text.get(), {1, 3});
    EXPECT_EQ(UnitsOf(text.get()), (Units{'a', 'c'}));
    CFStringDelete(text.get(), {0, 2});
    CFStringAppend(text.get(), CFSTR("d"));
    EXPECT_TRUE(CFEqual(text.get(), CFSTR("d")));
}

TEST(CFString, TheEmptyTextIsOneConstant) {
    const CFStringRef empty = CFSTR("");
    const CFIndex count = CountOf(empty);
    EXPECT_GT(count, 1'000'000);
    const UInt8 mark[] = {0xEF, 0xBB, 0xBF};
    const Held<CFMutableStringRef> changing(CFStringCreateMutable(nullptr, 0));
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 0, kCFStringEncodingUTF8, false), empty);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, mark, 3, kCFStringEncodingUTF8, false), empty);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "", kCFStringEncodingASCII), empty);
    EXPECT_EQ(CFStringCreateWithSubstring(nullptr, CFSTR("ab"), {1, 0}), empty);
    EXPECT_EQ(CFStringCreateCopy(nullptr, changing.get()), empty);
    for (int i = 0; i < 100; ++i) CFRelease(empty);
    EXPECT_EQ(CountOf(empty), count);
}

TEST(CFString, LiteralsOfEqualTextAreOneConstant) {
    const CFStringRef first = CFSTR("literal \xE2\x82\xAC");
    EXPECT_EQ(first, CFSTR("literal \xE2\x82\xAC"));
    EXPECT_EQ(UnitsOf(first).back(), 0x20AC);
    for (int i = 0; i < 10; ++i) CFRelease(first);
    EXPECT_EQ(CountOf(CFRetain(first)), CountOf(CFSTR("")));
}

TEST(CFString, MistakesOfTheCallerEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Held<CFMutableArrayRef> array = MakeArray({"a"});
    const CFStringRef constant = CFSTR("constant");
    EXPECT_DEATH(CFRetain(nullptr), "");
    EXPECT_DEATH(CFRelease(nullptr), "");
    EXPECT_DEATH(CFEqual(constant, nullptr), "");
    EXPECT_DEATH(CFStringAppend(const_cast<CFMutableStringRef>(constant), constant), "");
    EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(array.get())), "");
    EXPECT_DEATH(CFStringGetCharacterAtIndex(constant, 8), "");
    EXPECT_FALSE(CFEqual(array.get(), constant));
}

}  // namespace
}  // namespace ZEMA
