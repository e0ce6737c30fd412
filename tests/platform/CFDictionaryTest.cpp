#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

Held<CFMutableDictionaryRef> MakeDictionary(const CFDictionaryKeyCallBacks& keys = kCFTypeDictionaryKeyCallBacks) {
    return Held<CFMutableDictionaryRef>(CFDictionaryCreateMutable(nullptr, 1, &keys, &kCFTypeDictionaryValueCallBacks));
}

TEST(CFDictionary, AddsAsMeasured) {
    for (const Json& row : VectorsOf("misc.json")) {
        if (row["op"] != "dictionary_add_if_absent") continue;
        SCOPED_TRACE(row.dump());
        const auto dictionary = MakeDictionary();
        for (const Json& pair : row["pairs"]) {
            CFDictionaryAddValue(dictionary.get(), MakeText(UnitsOf(pair[0])).get(), MakeText(UnitsOf(pair[1])).get());
        }
        EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), row["count"].get<CFIndex>());
        for (const auto& [key, value] : row["values"].items()) {
            const void* found = CFDictionaryGetValue(dictionary.get(), MakeText(key).get());
            ASSERT_NE(found, nullptr);
            EXPECT_EQ(UnitsOf(static_cast<CFStringRef>(found)), UnitsOf(value));
        }
    }
}

TEST(CFDictionary, AddingLeavesWhatIsThere) {
    const Text key = MakeText("key"), otherKey = MakeText("key");
    const Text value = MakeText("value"), otherValue = MakeText("other");
    {
        const auto dictionary = MakeDictionary();
        CFDictionaryAddValue(dictionary.get(), key.get(), value.get());
        EXPECT_EQ(CFGetRetainCount(key.get()), 2);
        EXPECT_EQ(CFGetRetainCount(value.get()), 2);
        CFDictionaryAddValue(dictionary.get(), otherKey.get(), otherValue.get());
        EXPECT_EQ(CFGetRetainCount(otherKey.get()), 1);
        EXPECT_EQ(CFGetRetainCount(otherValue.get()), 1);
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), otherKey.get()), value.get());
        EXPECT_EQ(CFGetRetainCount(value.get()), 2);
    }
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
}

TEST(CFDictionary, SettingReplacesKeyAndValue) {
    const Text key = MakeText("key"), otherKey = MakeText("key");
    const Text value = MakeText("value"), otherValue = MakeText("other");
    const auto dictionary = MakeDictionary();
    CFDictionarySetValue(dictionary.get(), key.get(), value.get());
    CFDictionarySetValue(dictionary.get(), otherKey.get(), otherValue.get());
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 1);
    const void* keys[1];
    const void* values[1];
    CFDictionaryGetKeysAndValues(dictionary.get(), keys, values);
    EXPECT_EQ(keys[0], otherKey.get());
    EXPECT_EQ(values[0], otherValue.get());
    CFDictionarySetValue(dictionary.get(), otherKey.get(), otherValue.get());  // the same objects once more
    EXPECT_EQ(CFGetRetainCount(otherValue.get()), 2);
}

TEST(CFDictionary, CopyingKeysMakesThemIndependent) {
    const auto dictionary = MakeDictionary(kCFCopyStringDictionaryKeyCallBacks);
    const Held<CFMutableStringRef> key(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(key.get(), CFSTR("key"));
    CFDictionaryAddValue(dictionary.get(), key.get(), kCFBooleanTrue);
    EXPECT_EQ(CFGetRetainCount(key.get()), 1);
    CFStringAppend(key.get(), CFSTR("s"));
    EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), CFSTR("key")));
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), key.get()));
}

TEST(CFDictionary, TellsAnAbsentKeyFromANullValue) {
    const Held<CFMutableDictionaryRef> dictionary(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, nullptr));
    CFDictionaryAddValue(dictionary.get(), CFSTR("null"), nullptr);
    int mark = 0;
    const void* value = &mark;
    EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary.get(), CFSTR("absent"), &value));
    EXPECT_EQ(value, &mark);
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary.get(), CFSTR("null"), &value));
    EXPECT_EQ(value, nullptr);
}

TEST(CFDictionary, FindsEveryKeyAtEverySize) {
    const auto dictionary = MakeDictionary();
    std::vector<Text> keys;
    for (int i = 0; i < 1000; ++i) {
        keys.push_back(MakeText(std::to_string(i)));
        EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), keys.back().get()));
        CFDictionarySetValue(dictionary.get(), keys.back().get(), keys.back().get());
        for (const int earlier : {0, i / 2, i}) {
            const Text key = MakeText(std::to_string(earlier));
            EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), keys[static_cast<std::size_t>(earlier)].get());
        }
    }
    // Handed out in the order in which they came.
    std::vector<const void*> visited;
    const auto visit = [](const void* key, const void* value, void* context) {
        EXPECT_EQ(key, value);
        static_cast<std::vector<const void*>*>(context)->push_back(key);
    };
    CFDictionaryApplyFunction(dictionary.get(), visit, &visited);
    ASSERT_EQ(visited.size(), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) EXPECT_EQ(visited[i], keys[i].get());
}

// With a list search or colliding hashes this would take minutes.
TEST(CFDictionary, ManySimilarKeysCostLittle) {
    const auto dictionary = MakeDictionary();
    constexpr int kCount = 200'000;
    for (int i = 0; i < kCount; ++i) {
        CFDictionaryAddValue(dictionary.get(), MakeText("a long common beginning " + std::to_string(i)).get(),
                             kCFBooleanTrue);
    }
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), kCount);
}

TEST(CFDictionary, EqualsByContentWhateverTheOrder) {
    const auto left = MakeDictionary(), right = MakeDictionary();
    for (const char* key : {"a", "b"}) CFDictionaryAddValue(left.get(), MakeText(key).get(), MakeText("1").get());
    CFDictionaryAddValue(right.get(), CFSTR("b"), CFSTR("1"));
    EXPECT_FALSE(CFEqual(left.get(), right.get()));
    CFDictionaryAddValue(right.get(), CFSTR("a"), CFSTR("1"));
    EXPECT_TRUE(CFEqual(left.get(), right.get()));
    CFDictionarySetValue(right.get(), CFSTR("a"), CFSTR("2"));
    EXPECT_FALSE(CFEqual(left.get(), right.get()));
}

}  // namespace
}  // namespace ZEMA
