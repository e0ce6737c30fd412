#include "xml/XMLDOMNodeAString.h"

#include <gtest/gtest.h>

#include "core/Exception.h"
#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

using Words = std::vector<std::string>;

// Names of the whole tree, children in parentheses.
std::string Shape(const XMLDOMNodeAString& node) {
    std::string shape(node.name.View());
    for (const auto& child : node.children) shape.append("(").append(Shape(*child)).append(")");
    return shape;
}

class Tester : public XMLDOMNodeAStringTester {
public:
    explicit Tester(bool accepting, bool throwing = false) : accepts(accepting), throws(throwing) {}
    bool Test(const XMLDOMNodeAString& root) override {
        if (throws) RangeException::Throw();
        seen.push_back(Shape(root));
        for (const std::string& attribute : AttributesOf(root)) seen.push_back(attribute);
        return accepts;
    }
    bool accepts;
    bool throws;
    Words seen;
};

TEST(XMLDOMNodeAString, KeepsElementsAndAttributesInDocumentOrder) {
    const ParsedText node("<?xml version='1.0'?><!-- c --><r b='1' a='2'><x><y/></x>t<?p i?><!-- c --><x/></r>");
    EXPECT_TRUE(node.succeeded);
    EXPECT_EQ(Shape(*node), "r(x(y))(x)");
    EXPECT_EQ(AttributesOf(*node), (Words{"b=1", "a=2"}));
    EXPECT_EQ(Strings(node->textLines), Words{"t"});
}

TEST(XMLDOMNodeAString, CutsItsTextIntoTrimmedLinesAndJoinsThem) {
    const struct {
        const char* content;
        Words lines;
        const char* text;
    } rows[] = {
        {"", {}, ""},
        {" \n\t\n ", {}, ""},
        {"\n   line one  \n\n line  two\n", {"line one", "line  two"}, "line one\nline  two"},
        {" \n&#32;&#10; a", {"a"}, "a"},
        {"ab<c> no </c>cd", {"abcd"}, "abcd"},
        {"a<!-- b -->&amp;<![CDATA[<]]>c", {"a&<c"}, "a&<c"},
        {"1<c/>\n<c/>2", {"1", "2"}, "1\n2"},
        {"a&#13;b\r\nc&#13;", {"a\rb", "c"}, "a\rb\nc"},
        {"&#160;", {"\xC2\xA0"}, "\xC2\xA0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        const ParsedText node("<r>" + std::string(row.content) + "</r>");
        EXPECT_EQ(Strings(node->textLines), row.lines);
        EXPECT_EQ(node->GetText().View(), row.text);
    }
}

TEST(XMLDOMNodeAString, DecodesWhatTheDocumentDeclaresAndWhatItHandsOut) {
    const ParsedText latin("<?xml version='1.0' encoding='ISO-8859-1'?><\xE4:r a='\xE4'>\xF6</\xE4:r>");
    EXPECT_EQ(AttributesOf(*latin), Words{"a=\xC3\xA4"});
    String texts[3];
    latin->GetName(texts[0]);
    latin->GetText(texts[1]);
    EXPECT_TRUE(latin->GetAttribute("a", texts[2]));
    EXPECT_EQ(texts[0], FromUtf8("\xC3\xA4:r"));
    EXPECT_EQ(texts[1], FromUtf8("\xC3\xB6"));
    EXPECT_EQ(texts[2], FromUtf8("\xC3\xA4"));
    EXPECT_EQ(Shape(*ParsedText("\xEF\xBB\xBF<r/>")), "r") << "a byte-order mark is no text";
}

TEST(XMLDOMNodeAString, IsEmptyWhenTheTextIsMalformed) {
    const char* const rows[] = {"",
                                "<r a='1'>t<x>u</x>",
                                "<r a='1'>t<x>u</y></r>",
                                "<r a='1' a='1'>t<x>u</x></r>",
                                "<r a='1'>t<x>&u;</x></r>",
                                "<r a='1'>t<x>\xFF</x></r>",
                                "<r a='1'>t<x>u</x></r>t"};
    for (const char* const text : rows) {
        SCOPED_TRACE(text);
        const ParsedText node(text);
        EXPECT_FALSE(node.succeeded);
        EXPECT_TRUE(IsEmpty(*node));
    }
}

TEST(XMLDOMNodeAString, AddsToWhatItHolds) {
    const ParsedText node("<r a='1' b='2'>t<x/></r>");
    node->attributes.PushBack({"a", "again"});
    EXPECT_TRUE(node->Parse(Bytes("<s c='5' b='4' d='6' a='9'>u<y/></s>"), nullptr));
    EXPECT_EQ(Shape(*node), "s(x)(y)");
    EXPECT_EQ(AttributesOf(*node), (Words{"a=9", "b=4", "a=again", "c=5", "d=6"})) << "the first of a name is set";
    EXPECT_EQ(Strings(node->textLines), Words{"u"});
}

TEST(XMLDOMNodeAString, FindsAndSetsTheFirstOfAName) {
    const ParsedText node("<r a='1' A='3'><y/><x n='1'/><X/><x n='2'/></r>");
    node->attributes.PushBack({"a", "second"});
    AString value;
    EXPECT_TRUE(node->GetAttribute("a", value));
    EXPECT_FALSE(node->GetAttribute("c", value));
    EXPECT_FALSE(node->GetAttribute("aa", value));
    EXPECT_EQ(value.View(), "1") << "a value that is not found stays";
    node->SetAttribute("a", "3");
    node->SetAttribute("c", "4");
    EXPECT_EQ(AttributesOf(*node), (Words{"a=3", "A=3", "a=second", "c=4"}));
    EXPECT_EQ(node->FindChild("x"), node->children[1].Get());
    EXPECT_EQ(node->FindChild("z"), nullptr);
}

TEST(XMLDOMNodeAString, ShowsTheRootToTheTesterBeforeAnythingBelow) {
    const struct {
        const char* text;
        bool accepts;
    } rows[] = {{"<r a='1'><x/></r>", true}, {"<r a='1'/>", false}, {"<r a='1'><x></r>", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto tester = New<Tester>(row.accepts);
        const ParsedText node(row.text, tester.Get());
        EXPECT_EQ(node.succeeded, row.accepts);
        EXPECT_EQ(IsEmpty(*node), !row.accepts);
        EXPECT_EQ(tester->seen, (Words{"r", "a=1"}));
    }
}

TEST(XMLDOMNodeAString, LetsAnExceptionThroughAndIsEmptyThen) {
    for (const char* text : {"<r a='1'><x>t</x></r>", "<r a='1'/>"}) {
        SCOPED_TRACE(text);
        const auto node = New<XMLDOMAString>();
        const auto tester = New<Tester>(true, true);
        EXPECT_THROW((void)node->Parse(Bytes(text), tester.Get()), RangeException*);
        EXPECT_TRUE(IsEmpty(*node));
        EXPECT_EQ(node->ReferenceCount(), 1);
        EXPECT_TRUE(node->Parse(Bytes(text), nullptr)) << "the node can be used again";
    }
}

TEST(XMLDOMNodeAString, SharesNamesAndRepeatedValues) {
    RefPointer<XMLDOMNodeAString> first, second;
    {
        const ParsedText node("<r><brick designID='3005'/><brick designID='3005'/></r>");
        first = node->children[0];
        second = node->children[1];
    }
    EXPECT_EQ(first->name.Data(), second->name.Data());
    EXPECT_EQ(first->attributes[0].first.Data(), second->attributes[0].first.Data());
    EXPECT_EQ(first->attributes[0].second.Data(), second->attributes[0].second.Data());
    second->name.Append("s", 1);
    EXPECT_EQ(first->name.View(), "brick") << "but a change stays with its node, which outlives its document";
}

}  // namespace
}  // namespace ZEMA::testing
