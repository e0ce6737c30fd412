// Texts whose size or nesting would exhaust a careless reader. What is quadratic here runs into the test's time limit.
#include <gtest/gtest.h>

#include <new>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

TEST(HostileText, ReleasesDeepNesting) {
    const std::string starts = Repeated("<a>", 200000);
    const std::string ends = Repeated("</a>", 200000);
    EXPECT_TRUE(ParsedText(starts + ends).succeeded);
    EXPECT_FALSE(ParsedText(starts + ends.substr(ends.size() / 2)).succeeded);
}

TEST(HostileText, ReadsManyAttributesOfOneElement) {
    std::string attributes;
    for (int i = 0; i < 100000; ++i) attributes += " a" + std::to_string(i) + "='" + std::to_string(i) + "'";
    const ParsedText node("<r" + attributes + "/>");
    ASSERT_EQ(node->attributes.Size(), 100000U);
    EXPECT_EQ(node->attributes[99999].second.View(), "99999");

    ASSERT_TRUE(node->Parse(Bytes("<r" + attributes + " b='1'/>"), nullptr));
    EXPECT_EQ(node->attributes.Size(), 100001U) << "set once more, not added once more";
}

TEST(HostileText, ReadsManyBlankLinesAndTextInPiecesOfOneByte) {
    const ParsedText node("<r>a" + Repeated("\n", 100000) + Repeated("&#97;", 2000000) + "</r>");
    ASSERT_EQ(node->textLines.Size(), 2U);
    EXPECT_EQ(node->textLines[1].Length(), 2000000U);
}

// A little that is declared may not stand for very much, and entities may not nest deeper than the stack.
TEST(HostileText, BoundsWhatDeclarationsStandFor) {
    const std::string elements = "<!ENTITY e '" + Repeated("<p/>", 100) + "'>";
    const std::string longDefault = "<!ATTLIST p a CDATA '" + Repeated("v", 100000) + "'>";
    const std::string longEntity = "<!ENTITY e '" + Repeated("v", 100000) + "'>";
    std::string plain;
    for (int i = 0; i < 1000; ++i) plain += "<!ENTITY e" + std::to_string(i) + " '<p/>'>";
    const auto defaults = [](int count) {
        std::string all;
        for (int i = 0; i < count; ++i) all += "<!ATTLIST part default" + std::to_string(i) + " CDATA '1234567'>";
        return all;
    };
    std::string chain = "<!ENTITY e0 'x'>";
    for (int i = 1; i < 100000; ++i) {
        chain += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
    }
    const struct {
        const char* what;
        std::string declarations;
        std::string content;
        bool succeeds;
    } rows[] = {
        {"many entities, one in another", plain + "<!ENTITY e '&e999;'>", "&e;", true},
        {"a few megabytes of defaults", longDefault, Repeated("<p/>", 40), true},
        {"a plain document with defaults", defaults(10), Repeated("<part designID='3005' materials='21'/>", 50000),
         true},
        {"as many attributes as may be declared", defaults(512), "", true},
        {"one more", defaults(513), "", false},
        {"entities nested deep in content", chain, "&e99999;", false},
        {"entities nested deep in a value", chain, "<p a='&e99999;'/>", false},
        {"a long default", longDefault, Repeated("<p/>", 20000), false},
        {"elements from an entity", elements, Repeated("&e;", 20000), false},
        {"text from an entity", longEntity, Repeated("&e;", 60), false},
        {"a value from an entity", longEntity, Repeated("<p a='&e;'/>", 60), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const ParsedText node("<!DOCTYPE r [" + row.declarations + "]><r>" + row.content + "</r>");
        EXPECT_EQ(node.succeeded, row.succeeds);
        EXPECT_EQ(Shape(*node).empty(), !row.succeeds);
    }
}

TEST(HostileText, RefusesWhatTheParserCannotCount) {
    AString text("<r/>");
    try {
        text.ResizeForOverwrite(0x80000000);  // never touched, so it takes no memory
    } catch (const std::bad_alloc&) {
        GTEST_SKIP() << "no room for a text of 2^31 bytes";
    }
    const auto node = New<XMLDOMAString>();
    node->SetAttribute("a", "1");
    EXPECT_FALSE(node->Parse(text, nullptr));
    EXPECT_EQ(Shape(*node), "");
}

}  // namespace
}  // namespace ZEMA::testing
