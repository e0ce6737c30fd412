#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

std::string Repeated(const std::string& bytes, int count) {
    std::string all;
    while (count-- > 0) all += bytes;
    return all;
}

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
        EXPECT_EQ(CountOf(text.get()), 3);
        const Held<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, text.get()));
        const Text fixed(CFStringCreateCopy(nullptr, changing.get()));
        for (int turn = 0; turn < 3; ++turn) CFStringAppend(changing.get(), changing.get());
        EXPECT_EQ(CountOf(text.get()), 3);
        EXPECT_TRUE(CFEqual(fixed.get(), text.get()));
        EXPECT_TRUE(CFEqual(changing.get(), MakeText(Repeated(bytes, 8)).get()));
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

TEST(CFString, TheEmptyTextIsOneConstant) {
    const CFStringRef empty = CFSTR("");
    const CFIndex count = CountOf(empty);
    EXPECT_GT(count, 1'000'000);
    const UInt8 mark[] = {0xEF, 0xBB, 0xBF};
    const Held<CFMutableStringRef> changing(CFStringCreateMutable(nullptr, 0));
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, mark, 3, kCFStringEncodingUTF8, false), empty);
    EXPECT_EQ(CFStringCreateWithSubstring(nullptr, CFSTR("ab"), {1, 0}), empty);
    EXPECT_EQ(CFStringCreateCopy(nullptr, changing.get()), empty);
    for (int i = 0; i < 100; ++i) CFRelease(empty);
    EXPECT_EQ(CountOf(empty), count);
}

}  // namespace
}  // namespace ZEMA
