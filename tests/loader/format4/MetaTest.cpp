#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

LoadedScene WithMeta(const std::string& entries) {
    return LoadedScene(Root("<Meta>" + entries + "</Meta>"));
}

TEST(Format4Meta, CollectsTextUpToTheFirstElement) {
    const std::pair<const char*, const char*> rows[] = {
        {" a\n b ", " a\n b "},
        {"a<!-- x -->&amp;<![CDATA[<b>]]>&#228;", "a&<b>\xC3\xA4"},
        {"a<x>b<y>c</y></x>d<z/>e", "a"},
        {"<x>b</x>c", ""},
    };
    for (const auto& [content, value] : rows) {
        SCOPED_TRACE(content);
        const LoadedScene loaded = WithMeta("<E>" + std::string(content) + "</E> between <F>f</F>");
        ASSERT_EQ(loaded->meta.Size(), 2U);
        EXPECT_EQ(Utf8(loaded->meta[0].value), value);
        EXPECT_EQ(Utf8(loaded->meta[1].value), "f");
    }
}

TEST(Format4Meta, TakesNamesAndAttributesAsAscii) {
    const LoadedScene loaded = WithMeta("<\xC3\xA4 k\xC3\xA4='v' k='\xC3\xA4' c='1'>\xC3\xA4</\xC3\xA4>");
    ASSERT_EQ(loaded->meta.Size(), 1U);
    ASSERT_EQ(loaded->meta[0].attributes.Size(), 3U);
    EXPECT_TRUE(loaded->meta[0].name.IsEmpty());
    EXPECT_TRUE(loaded->meta[0].attributes[0].key.IsEmpty());
    EXPECT_TRUE(loaded->meta[0].attributes[1].value.IsEmpty());
    EXPECT_EQ(Utf8(loaded->meta[0].value), "\xC3\xA4");
}

TEST(Format4Meta, KeepsTheTextOfAnEntryThatBreaksOff) {
    const LoadedScene loaded("<WQFML versionMajor='4'><Meta><E>text");
    EXPECT_FALSE(loaded.succeeded);
    ASSERT_EQ(loaded->meta.Size(), 1U);
    EXPECT_EQ(Utf8(loaded->meta[0].value), "text");
}

}  // namespace
}  // namespace ZEMA::testing
