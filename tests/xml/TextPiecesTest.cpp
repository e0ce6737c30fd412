#include "xml/TextPieces.h"

#include <gtest/gtest.h>

#include "tests/xml/Markup.h"

namespace ZEMA::testing {
namespace {

TEST(TextPieces, SplitsAtDelimiters) {
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"", {}}, {"a,,b", {"a", "", "b"}}, {"a,", {"a"}}, {",a", {"", "a"}}, {",", {""}}, {" a , b ", {" a ", " b "}},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text);
        BasicArray<AString> pieces;
        pieces.PushBack(text);
        Split(pieces[0], ',', pieces);  // a piece that goes may be the text
        EXPECT_EQ(Strings(pieces), expected);
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
