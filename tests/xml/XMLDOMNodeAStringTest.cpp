#include "xml/XMLDOMNodeAString.h"

#include <gtest/gtest.h>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

using Words = std::vector<std::string>;

TEST(XMLDOMNodeAString, FindsAndSetsTheFirstAttributeOfAName) {
    const ParsedText node("<r a='1' b='\xC3\xA4' A='3'/>");
    node->attributes.PushBack({"a", "second"});
    AString bytes;
    String text;
    EXPECT_TRUE(node->GetAttribute("a", bytes));
    EXPECT_TRUE(node->GetAttribute("b", text));
    EXPECT_FALSE(node->GetAttribute("c", bytes));
    EXPECT_FALSE(node->GetAttribute("bb", text));
    EXPECT_EQ(bytes.View(), "1") << "a value that is not found stays";
    EXPECT_EQ(text.Length(), 1U) << "UTF-8 is decoded";

    node->SetAttribute("a", "3");
    node->SetAttribute("c", "4");
    EXPECT_EQ(AttributesOf(*node), (Words{"a=3", "b=\xC3\xA4", "A=3", "a=second", "c=4"}));
}

TEST(XMLDOMNodeAString, FindsTheFirstChildOfAName) {
    const ParsedText node("<r><y/><x n='1'/><X/><x n='2'/></r>");
    EXPECT_EQ(node->FindChild("x"), node->children[1].Get());
    EXPECT_EQ(node->FindChild("z"), nullptr);
}

TEST(XMLDOMNodeAString, JoinsItsLinesAndDecodesItsName) {
    const ParsedText node("<\xC3\xA4:b>  4.5 \n\n  7  \xE2\x82\xAC  </\xC3\xA4:b>");
    String text;
    node->GetText(text);
    EXPECT_EQ(node->GetText().View(), "4.5\n7  \xE2\x82\xAC");
    EXPECT_EQ(text.Length(), 8U);
    node->GetName(text);
    EXPECT_EQ(text.Length(), 3U);
    EXPECT_EQ(ParsedText("<r/>")->GetText().View(), "");
}

TEST(XMLDOMNodeAString, ChildOutlivesTheDocument) {
    RefPointer<XMLDOMNodeAString> child;
    {
        const ParsedText node("<r><a><b n='1'>text</b></a><c/></r>");
        child = node->children[0]->children[0];
    }
    EXPECT_EQ(child->name.View(), "b");
    EXPECT_EQ(child->GetText().View(), "text");
    EXPECT_EQ(child->ReferenceCount(), 1);
}

}  // namespace
}  // namespace ZEMA::testing
