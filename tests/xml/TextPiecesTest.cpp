#include "xml/TextPieces.h"

#include <gtest/gtest.h>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

TEST(TextPieces, SplitsAtDelimiters) {
    const struct {
        const char* what;
        const char* text;
        std::vector<std::string> pieces;
    } rows[] = {
        {"no text, no piece", "", {}},
        {"no delimiter", "ab", {"ab"}},
        {"two in a row hold an empty piece", "a,,b", {"a", "", "b"}},
        {"one at the end adds none", "a,", {"a"}},
        {"one at the start adds one", ",a", {"", "a"}},
        {"the delimiter alone", ",", {""}},
        {"pieces are not trimmed", " a , b ", {" a ", " b "}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        BasicArray<AString> pieces;
        pieces.PushBack("old");
        Split(row.text, ',', pieces);
        EXPECT_EQ(Strings(pieces), row.pieces);
    }
}

TEST(TextPieces, SplitsAPieceOfItsOwnResult) {
    BasicArray<AString> pieces;
    pieces.PushBack("a,b");
    Split(pieces[0], ',', pieces);
    EXPECT_EQ(Strings(pieces), (std::vector<std::string>{"a", "b"}));
}

TEST(TextPieces, TrimsBothEnds) {
    const struct {
        const char* what;
        const char* text;
        const char* trimmed;
    } rows[] = {
        {"nothing to trim", "a b", "a b"},
        {"every kind of white space", " \t\n\v\f\ra b\r\f\v\n\t ", "a b"},
        {"white space alone", " \n ", ""},
        {"no text", "", ""},
        {"a no-break space is none", "\xC2\xA0", "\xC2\xA0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        AString text = row.text;
        const AString copy = text;
        Trim(text);
        EXPECT_EQ(text.View(), row.trimmed);
        EXPECT_EQ(copy.View(), row.text) << "a copy keeps its text";
    }
}

}  // namespace
}  // namespace ZEMA::testing
