#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

TEST(CFArray, KeepsItsElementsAliveWhenToldTo) {
    const Text text = MakeText("kept");
    {
        const auto texts = MakeArray({});
        const Held<CFMutableArrayRef> addresses(CFArrayCreateMutable(nullptr, 1, nullptr));
        for (const auto& array : {texts.get(), addresses.get()}) {
            CFArrayAppendValue(array, text.get());
            CFArrayAppendValue(array, text.get());
            EXPECT_EQ(CFGetRetainCount(text.get()), 3);
        }
        EXPECT_TRUE(CFEqual(texts.get(), MakeArray({"kept", "kept"}).get()));
        EXPECT_FALSE(CFEqual(texts.get(), MakeArray({"kept", "left"}).get()));
        EXPECT_FALSE(CFEqual(texts.get(), addresses.get()));
    }
    EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

Held<CFMutableDictionaryRef> MakeDictionary() {
    return Held<CFMutableDictionaryRef>(
        CFDictionaryCreateMutable(nullptr, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
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

TEST(CFDictionary, AddingLeavesWhatIsThereAndSettingReplacesIt) {
    const Text key = MakeText("key"), otherKey = MakeText("key");
    const Text value = MakeText("value"), otherValue = MakeText("other");
    const auto dictionary = MakeDictionary();
    const auto counts = [&] {
        std::vector<CFIndex> all;
        for (const Text* text : {&key, &value, &otherKey, &otherValue}) all.push_back(CFGetRetainCount(text->get()));
        return all;
    };
    CFDictionaryAddValue(dictionary.get(), key.get(), value.get());
    CFDictionaryAddValue(dictionary.get(), otherKey.get(), otherValue.get());
    EXPECT_EQ(counts(), (std::vector<CFIndex>{2, 2, 1, 1}));
    CFDictionarySetValue(dictionary.get(), otherKey.get(), otherValue.get());
    EXPECT_EQ(counts(), (std::vector<CFIndex>{1, 1, 2, 2}));
    // What nobody else keeps survives being set over itself.
    const Text alone = MakeText("kept by the dictionary alone");
    CFDictionarySetValue(dictionary.get(), key.get(), Text(CFStringCreateMutableCopy(nullptr, 0, alone.get())).get());
    CFDictionarySetValue(dictionary.get(), key.get(), CFDictionaryGetValue(dictionary.get(), key.get()));
    EXPECT_TRUE(CFEqual(CFDictionaryGetValue(dictionary.get(), key.get()), alone.get()));

    const auto other = MakeDictionary();
    CFDictionarySetValue(other.get(), key.get(), alone.get());
    EXPECT_TRUE(CFEqual(other.get(), dictionary.get()));
    CFDictionarySetValue(other.get(), value.get(), value.get());
    EXPECT_FALSE(CFEqual(other.get(), dictionary.get()) || CFEqual(dictionary.get(), other.get()));
}

TEST(CFDictionary, FindsEveryKeyAtEverySize) {
    const auto dictionary = MakeDictionary();
    std::vector<Text> keys;
    for (int i = 0; i < 1000; ++i) {
        keys.push_back(MakeText(std::to_string(i)));
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), keys.back().get()), nullptr);
        CFDictionarySetValue(dictionary.get(), keys.back().get(), keys.back().get());
        for (const int earlier : {0, i / 2, i}) {
            const Text key = MakeText(std::to_string(earlier));
            EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), keys[static_cast<std::size_t>(earlier)].get());
        }
    }
    // Handed out in the order in which they came.
    std::vector<const void*> allKeys(keys.size()), allValues(keys.size());
    CFDictionaryGetKeysAndValues(dictionary.get(), allKeys.data(), allValues.data());
    EXPECT_EQ(allKeys, allValues);
    for (std::size_t i = 0; i < keys.size(); ++i) EXPECT_EQ(allKeys[i], keys[i].get());
}

// With a list search or colliding hashes this would take minutes.
TEST(CFDictionary, ManySimilarKeysCostLittle) {
    const auto dictionary = MakeDictionary();
    for (int i = 0; i < 200'000; ++i) {
        CFDictionaryAddValue(dictionary.get(), MakeText("a long common beginning " + std::to_string(i)).get(),
                             kCFBooleanTrue);
    }
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 200'000);
}

}  // namespace
}  // namespace ZEMA
