// The document tree, and the pieces that its texts are cut into.
#include "xml/XMLDOMNodeAString.h"

#include <gtest/gtest.h>

#include "core/Exception.h"
#include "tests/xml/Markup.h"
#include "xml/TextPieces.h"

namespace ZEMA::testing {
namespace {

TEST(XMLDOMNodeAString, KeepsElementsAttributesAndTrimmedLinesInDocumentOrder) {
    const struct {
        const char* document;
        const char* shape;
        const char* text;
    } rows[] = {
        {"<?xml version='1.0'?><!-- c --><r b='1' a='2'><x><y/></x>t<?p i?><!-- c --><x/></r>",
         "r[b=1,a=2]'t'(x(y))(x)", "t"},
        {"<r> \n\t\n </r>", "r", ""},
        {"<r>\n   line one  \n\n line  two\n</r>", "r'line one|line  two'", "line one\nline  two"},
        {"<r> \n&#32;&#10; a</r>", "r'a'", "a"},
        {"<r>ab<c> no </c>cd</r>", "r'abcd'(c'no')", "abcd"},
        {"<r>a<!-- b -->&amp;<![CDATA[<]]>c</r>", "r'a&<c'", "a&<c"},
        {"<r>1<c/>\n<c/>2</r>", "r'1|2'(c)(c)", "1\n2"},
        {"<r>a&#13;b\r\nc&#13;</r>", "r'a\rb|c'", "a\rb\nc"},
        {"<r>&#160;</r>", "r'\xC2\xA0'", "\xC2\xA0"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><\xE4:r a='\xE4'>\xF6</\xE4:r>", "ä:r[a=ä]'ö'", "ö"},
        {"\xEF\xBB\xBF<r/>", "r", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.document);
        const ParsedText node(row.document);
        EXPECT_TRUE(node.succeeded);
        EXPECT_EQ(Shape(*node), row.shape);
        EXPECT_EQ(node->GetText().View(), row.text);
    }
    const ParsedText node("<r>ö</r>");
    String text;
    node->GetText(text);
    EXPECT_EQ(text, FromUtf8("ö"));
}

TEST(XMLDOMNodeAString, IsEmptyWhenTheTextIsMalformed) {
    for (const char* const text :
         {"", "<r a='1'>t<x>u</x>", "<r a='1'>t<x>u</y></r>", "<r a='1' a='1'>t<x>u</x></r>",
          "<r a='1'>t<x>&u;</x></r>", "<r a='1'>t<x>\xFF</x></r>", "<r a='1'>t<x>u</x></r>t"}) {
        SCOPED_TRACE(text);
        const ParsedText node(text);
        EXPECT_FALSE(node.succeeded);
        EXPECT_EQ(Shape(*node), "");
    }
}

TEST(XMLDOMNodeAString, AddsToWhatItHolds) {
    const ParsedText node("<r a='1' b='2'>t<x/></r>");
    node->attributes.PushBack({"a", "again"});
    EXPECT_TRUE(node->Parse(Bytes("<s c='5' b='4' d='6' a='9'>u<y/></s>"), nullptr));
    EXPECT_EQ(Shape(*node), "s[a=9,b=4,a=again,c=5,d=6]'u'(x)(y)") << "the first of a name is set";
}

TEST(XMLDOMNodeAString, FindsAndSetsTheFirstOfAName) {
    const ParsedText node("<ö a='ä' A='3'><y/><x n='1'/><X/><x n='2'/></ö>");
    node->attributes.PushBack({"a", "second"});
    String name, text;
    node->GetName(name);
    EXPECT_EQ(name, FromUtf8("ö"));
    EXPECT_TRUE(node->GetAttribute("a", text));
    EXPECT_EQ(text, FromUtf8("ä"));
    AString value = "before";
    EXPECT_FALSE(node->GetAttribute("c", value) || node->GetAttribute("aa", value));
    EXPECT_EQ(value.View(), "before") << "what is not found changes nothing";
    node->SetAttribute("a", "3");
    node->SetAttribute("c", "4");
    EXPECT_EQ(Shape(*node), "ö[a=3,A=3,a=second,c=4](y)(x[n=1])(X)(x[n=2])");
    EXPECT_EQ(node->FindChild("x"), node->children[1].Get());
    EXPECT_EQ(node->FindChild("z"), nullptr);
}

// Notes what it is shown.
class Tester : public XMLDOMNodeAStringTester {
public:
    explicit Tester(bool accepting, bool throwing = false) : accepts(accepting), throws(throwing) {}
    bool Test(const XMLDOMNodeAString& root) override {
        if (throws) RangeException::Throw();
        seen += Shape(root);
        return accepts;
    }
    bool accepts;
    bool throws;
    std::string seen;
};

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
        EXPECT_EQ(Shape(*node).empty(), !row.accepts);
        EXPECT_EQ(tester->seen, "r[a=1]");
    }
}

TEST(XMLDOMNodeAString, LetsAnExceptionThroughAndIsEmptyThen) {
    for (const char* text : {"<r a='1'><x>t</x></r>", "<r a='1'/>"}) {
        SCOPED_TRACE(text);
        const auto node = New<XMLDOMAString>();
        const auto tester = New<Tester>(true, true);
        EXPECT_THROW((void)node->Parse(Bytes(text), tester.Get()), RangeException*);
        EXPECT_EQ(Shape(*node), "");
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

TEST(TextPieces, SplitsAtDelimiters) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""}, {"a,,b", "a||b|"}, {"a,", "a|"}, {",a", "|a|"}, {",", "|"}, {" a , b ", " a | b |"},
    };
    for (const auto& [text, expected] : rows) {
        BasicArray<AString> pieces;
        pieces.PushBack(text);
        Split(pieces[0], ',', pieces);  // a piece that goes may be the text
        std::string found;
        for (const AString& piece : pieces) found.append(piece.View()).append("|");
        EXPECT_EQ(found, expected) << text;
    }
}

TEST(TextPieces, TrimsBothEnds) {
    const std::pair<const char*, const char*> rows[] = {
        {"a b", "a b"}, {" \t\n\v\f\ra b\r\f\v\n\t ", "a b"}, {" \n ", ""}, {"", ""}, {"\xC2\xA0", "\xC2\xA0"},
    };
    for (const auto& [untrimmed, trimmed] : rows) {
        AString text = untrimmed;
        const AString copy = text;
        Trim(text);
        EXPECT_EQ(text.View(), trimmed);
        EXPECT_EQ(copy.View(), untrimmed) << "a copy keeps its text";
    }
}

}  // namespace
}  // namespace ZEMA::testing
