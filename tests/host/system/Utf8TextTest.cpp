#include "host/system/Utf8Text.h"

#include <gtest/gtest.h>

#include "platform/Foundation/CFPointer.h"

namespace ZEMA::testing {

#define BAD "\xEF\xBF\xBD"

TEST(Utf8Text, ReplacesEveryByteThatBelongsToNoCharacter) {
    const struct {
        const char* what;
        const char* bytes;
        const char* text;
    } rows[] = {
        {"ASCII and longer characters", "aé€\xF0\x9F\x9A\x80", "aé€\xF0\x9F\x9A\x80"},
        {"the borders of what Unicode has", "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF",
         "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF"},
        {"Latin-1", "a\xE9z", "a" BAD "z"},
        {"cut off at the end", "\xE2\x82", BAD BAD},
        {"overlong", "\xC0\xAF\xE0\x80\xAF", BAD BAD BAD BAD BAD},
        {"a surrogate", "\xED\xA0\x80", BAD BAD BAD},
        {"above U+10FFFF", "\xF4\x90\x80\x80\xF5", BAD BAD BAD BAD BAD},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ReplaceInvalidUtf8(row.bytes), row.text) << row.what;
        EXPECT_EQ(IsUtf8(row.bytes), std::string(row.bytes) == row.text) << row.what;
    }
    EXPECT_EQ(EscapeControls(std::string("\0\x1B[1m\n\x7F\xC2\x85\xC2\xA0\xC3\x85", 13)),
              "\\u0000\\u001B[1m\\u000A\\u007F\\u0085\xC2\xA0\xC3\x85");
}

TEST(Utf8Text, WritesHalfAPairAsReplacement) {
    std::u16string units(5000, u'\u20AC');  // longer than one part of the conversion
    units[2500] = 0xD800;
    const Foundation::CFPointer<CFStringRef> text(CFStringCreateWithCharacters(
        kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size())));
    const std::string utf8 = Utf8Of(text.Get());
    ASSERT_EQ(utf8.size(), 15000u);
    EXPECT_EQ(utf8.substr(7497, 9), "€" BAD "€");
}

}  // namespace ZEMA::testing
