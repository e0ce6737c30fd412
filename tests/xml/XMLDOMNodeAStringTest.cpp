#include "xml/XMLDOMNodeAString.h"

#include <gtest/gtest.h>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

using Words = std::vector<std::string>;

TEST(XMLDOMNodeAString, FindsTheFirstAttributeOfAName) {
    const ParsedText node("<r a='1' b='\xC3\xA4' A='3'/>");
    node->attributes.PushBack({"a", "second"});
    AString bytes;
    EXPECT_TRUE(node->GetAttribute("a", bytes));
    EXPECT_EQ(bytes.View(), "1");
    EXPECT_FALSE(node->GetAttribute("c", bytes));
    EXPECT_EQ(bytes.View(), "1") << "a value that is not found stays";
    String text;
    EXPECT_TRUE(node->GetAttribute("b", text));
    EXPECT_EQ(text.ToAString().View(), "\xC3\xA4");
    EXPECT_EQ(text.Length(), 1U);
    EXPECT_FALSE(node->GetAttribute("bb", text));
    EXPECT_EQ(text.Length(), 1U);
}

TEST(XMLDOMNodeAString, SetsAnAttributeWhereItStandsOrAtTheEnd) {
    const ParsedText node("<r a='1' b='2'/>");
    node->SetAttribute("a", "3");
    node->SetAttribute("c", "4");
    EXPECT_EQ(AttributesOf(*node), (Words{"a=3", "b=2", "c=4"}));
}

TEST(XMLDOMNodeAString, FindsTheFirstChildOfAName) {
    const ParsedText node("<r><y/><x n='1'/><X/><x n='2'/></r>");
    EXPECT_EQ(node->FindChild("x"), node->children[1].Get());
    EXPECT_EQ(node->FindChild("X"), node->children[2].Get());
    EXPECT_EQ(node->FindChild("z"), nullptr);
}

TEST(XMLDOMNodeAString, JoinsItsLines) {
    const struct {
        const char* what;
        const char* markup;
        const char* text;
    } rows[] = {
        {"no line", "<r/>", ""},
        {"one line", "<r> a </r>", "a"},
        {"white space within a line stays", "<r>  4.5 \n\n  7  x  </r>", "4.5\n7  x"},
        {"beyond ASCII", "<r>\xC3\xA4\n\xE2\x82\xAC</r>", "\xC3\xA4\n\xE2\x82\xAC"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const ParsedText node(row.markup);
        EXPECT_EQ(node->GetText().View(), row.text);
        String text;
        node->GetText(text);
        EXPECT_EQ(text.ToAString().View(), row.text);
    }
}

TEST(XMLDOMNodeAString, DecodesItsName) {
    const ParsedText node("<\xC3\xA4:b/>");
    String name;
    node->GetName(name);
    EXPECT_EQ(name.ToAString().View(), "\xC3\xA4:b") << "a prefix stays part of it";
    EXPECT_EQ(name.Length(), 3U);
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
