// Queries that are wrong: where, and what was expected. What right ones find is tried on an index.

#include "host/search/Query.h"

#include <gtest/gtest.h>

namespace ZEMA::testing {

TEST(Query, SaysWhereItIsWrong) {
    const std::string deep(101, '(');
    const struct {
        const char* what;
        std::string text;
        std::size_t place;
        const char* expected;  // a part of it
    } rows[] = {
        {"nothing", " ", 1, "a word"},
        {"an operator without a right side", "a OR", 4, "a word"},
        {"an operator without a left side", "OR a", 0, "a word"},
        {"NOT alone", "a NOT", 5, "a word"},
        {"nothing in parentheses", "a ()", 3, "a word"},
        {"a parenthesis that does not end", "a (b (c) d", 2, "no ')'"},
        {"one that does not begin", "a) b", 1, "no '('"},
        {"too deep", deep + "a", 100, "100 deep"},
        {"a quotation that does not end", "author:\"ada", 7, "no second"},
        {"no letter", "a -- b", 2, "a letter"},
        {"no letter in a quotation", "\"*\"", 1, "a letter"},
        {"a star within a word", "ca*tle", 2, "at the end"},
        {"a star alone", "a *", 2, "at the end"},
        {"a star behind a state", "is:away*", 7, "behind words"},
        {"an unknown field", "x autor:ada", 2, "no field 'autor'"},
        {"a field without a value", "author: ada", 7, "right behind 'author:'"},
        {"a field before parentheses", "author:(ada)", 7, "right behind 'author:'"},
        {"an unknown state", "is:lost", 3, "failed, away or repaired"},
        {"a design that is no number", "brick:x", 6, "brick design"},
        {"bricks without a number", "bricks:..", 7, "a number or a range"},
        {"a negative number", "bricks:-1..", 7, "a number or a range"},
        {"a number of more than 64 bits", "bricks:9223372036854775808", 7, "a number or a range"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const ParsedQuery parsed = ParseQuery(row.text);
        EXPECT_FALSE(parsed.query);
        EXPECT_EQ(parsed.place, row.place);
        EXPECT_NE(parsed.expected.find(row.expected), std::string::npos) << parsed.expected;
    }
}

TEST(Query, HasLimitsThatNoUserMeets) {
    std::string wide = "a";
    for (int i = 1; i < 500; ++i) wide += " OR a";
    EXPECT_TRUE(ParseQuery(wide).query);
    EXPECT_FALSE(ParseQuery(wide + " a").query);
    EXPECT_TRUE(ParseQuery(std::string(100, '(') + "a" + std::string(100, ')')).query);
    EXPECT_FALSE(ParseQuery("path:" + std::string(4097, 'x')).query);
}

TEST(Query, TellsOfOperatorsInSmallLetters) {
    EXPECT_EQ(ParseQuery("castle or not bridge").hints.size(), 2u);
    EXPECT_EQ(ParseQuery("castle OR NOT \"or\" author:not").hints.size(), 0u);
}

}  // namespace ZEMA::testing
