// Texts whose size or nesting would exhaust a careless reader. What is quadratic here runs into the test's time limit.
#include <gtest/gtest.h>

#include <new>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

TEST(HostileText, ReleasesDeepNesting) {
    const std::string starts = Repeated("<a>", 200000);
    const std::string ends = Repeated("</a>", 200000);
    const struct {
        const char* what;
        std::string text;
        bool succeeds;
    } rows[] = {
        {"well formed", starts + ends, true},
        {"breaks off at the bottom", starts, false},
        {"breaks off half way up", starts + ends.substr(ends.size() / 2), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(ParsedText(row.text).succeeded, row.succeeds);
    }
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

TEST(HostileText, ReadsManyBlankLines) {
    const std::string lines = Repeated("\n", 100000);
    const ParsedText node("<r>a" + lines + "b" + lines + "</r>");
    EXPECT_EQ(Strings(node->textLines), (std::vector<std::string>{"a", "b"}));
}

TEST(HostileText, ReadsTextInPiecesOfOneByte) {
    const ParsedText node("<r>" + Repeated("&#97;", 2000000) + "</r>");
    ASSERT_EQ(node->textLines.Size(), 1U);
    EXPECT_EQ(node->textLines[0].Length(), 2000000U);
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
    EXPECT_TRUE(IsEmpty(*node));
}

}  // namespace
}  // namespace ZEMA::testing
