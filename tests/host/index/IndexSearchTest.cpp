// What queries find, on records in tables.

#include "host/index/IndexSearch.h"

#include <gtest/gtest.h>

namespace ZEMA::testing {

namespace {

using List = Value::List;

Value Texts(std::initializer_list<const char*> texts) {
    List list;
    for (const char* const text : texts) list.push_back({std::string(text)});
    return {std::move(list)};
}

std::vector<DocumentRecord> Records() {
    std::vector<DocumentRecord> records;
    records.push_back({"/models/castle.wqf",
                       true,
                       {{"kMDItemVersion", {std::string("5")}},
                        {"kMDItemCreator", {std::string("Builder 4.2")}},
                        {"kMDItemDescription",
                         {Value::Dictionary{{"de", {std::string("Ein Tor mit zwei Türmen.")}},
                                            {"en", {std::string("A gate, or a door")}},
                                            {"ja", {std::string("大阪城の門")}}}}},
                        {"kMDItemAuthors", Texts({"Ada Lovelace", "Grete Müller"})},
                        {"com_zema_wqf_numberofbricks", {std::int64_t{4}}},
                        {"com_zema_wqf_listofbricks", Texts({"3062", "4100"})}}});
    records.push_back({"/models/50%_off/Tower 2.wqfml",
                       true,
                       {{"kMDItemVersion", {std::string("4")}},
                        {"kMDItemAuthors", Texts({"Grete Lovelace"})},
                        {"kMDItemKeywords", Texts({"Straße", "gateway"})},
                        {"com_zema_wqf_numberofbricks", {std::int64_t{100}}},
                        {"com_zema_wqf_listofbricks", Texts({"30"})}}});
    records.push_back({"/models/broken.wqf", false, {}, "parserError"});
    records.back().repaired = true;
    records.push_back({"/models/\xE9.wqf", true, {{"com_zema_wqf_numberofbricks", {std::int64_t{0}}}}});
    return records;
}

// The documents as their first letters: c, T, b and é.
std::string Found(const std::string& text) {
    const ParsedQuery parsed = ParseQuery(text);
    if (!parsed.query) return parsed.expected;
    RecordFilter filter(*parsed.query);
    std::string found;
    const std::vector<DocumentRecord> records = Records();
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (filter.Finds(records[i])) found += "cTb\xE9"[i];
    }
    if (filter.Why()) return filter.Why().text;
    return found;
}

}  // namespace

TEST(IndexSearch, FindsWhatAQuerySays) {
    const struct {
        const char* what;
        const char* query;
        const char* found;
    } rows[] = {
        {"a word of any text", "lovelace", "cT"},
        {"all words", "ada GATE", "c"},
        {"the name of the file", "wqfml tower", "T"},
        {"a design as a word", "3062", "c"},
        {"one text of many letters that are words", "大阪", "c"},
        {"not in another order", "阪大", ""},
        {"folded words", "TÜRMEN", "c"},
        {"fully folded ones", "strasse", "T"},
        {"no part of a word", "gat", ""},
        {"its beginning", "gat*", "cT"},
        {"a phrase", "\"ada lovelace\"", "c"},
        {"not over two texts", "\"lovelace grete\"", ""},
        {"and not over their boundary", "lovelace-\xEE\x80\x80-grete", ""},
        {"the beginning of a phrase", "\"zwei tur\"*", "c"},
        {"signs between words make a phrase", "Builder/4.2", "c"},
        {"words of operators in quotation marks", "\"or\" a", "c"},
        {"a field", "author:grete", "cT"},
        {"a phrase in a field", "author:\"grete lovelace\"", "T"},
        {"not in another one", "keyword:grete", ""},
        {"creator", "creator:builder", "c"},
        {"keyword", "keyword:gate*", "T"},
        {"description", "description:door", "c"},
        {"brick", "brick:30", "T"},
        {"the beginning of a brick", "brick:30*", "cT"},
        {"a language", "lang:DE", "c"},
        {"a version", "version:4", "T"},
        {"bricks", "bricks:100", "T"},
        {"bricks from", "bricks:4..", "cT"},
        {"bricks up to", "bricks:..4", "c\xE9"},
        {"bricks between", "bricks:1..99", "c"},
        {"bricks between nothing", "bricks:99..1", ""},
        {"a piece of the path", "path:models/c", "c"},
        {"with any case of ASCII", "path:MODELS/Br", "b"},
        {"with signs that other languages know", "path:50%_off", "T"},
        {"which stand for themselves", "path:\"5_%_\"", ""},
        {"with a gap", "path:\"50*2.w\"", "T"},
        {"a failure", "is:failed", "b"},
        {"a repair", "is:repaired", "b"},
        {"nothing is away here", "is:away", ""},
        {"NOT finds what has no such attribute", "NOT bricks:0..50", "Tb"},
        {"NOT of words", "NOT lovelace", "b\xE9"},
        {"NOT twice", "NOT NOT lovelace", "cT"},
        {"NOT of versions and languages", "NOT version:4 NOT lang:de", "b\xE9"},
        {"NOT of paths", "NOT path:models/b", "cT\xE9"},
        {"AND binds before OR", "tower OR ada gate", "cT"},
        {"unless in parentheses", "(tower OR ada) gate", "c"},
        {"AND may be said", "grete AND bricks:100", "T"},
        {"words or something else", "ada OR is:failed", "cb"},
        {"NOT before parentheses", "NOT (ada OR is:failed)", "T\xE9"},
        {"blanks of Japanese keyboards", "大阪\xE3\x80\x80門", "c"},
        {"what the full-text table would take for its own", "author OR name", ""},
        {"quotation marks end nothing", "\"a\" \"OR\" \"NEAR(a b)\"", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Found(row.query), row.found);
    }
}

TEST(IndexSearch, TakesDeepAndWideQueries) {
    std::string deep = "ada";
    for (int i = 0; i < 99; ++i) deep = i % 2 == 0 ? "(NOT bricks:7 " + deep + ")" : "(is:away OR " + deep + ")";
    EXPECT_EQ(Found(deep), "c");
    std::string words = "ada";
    for (int i = 0; i < 99; ++i) words = i % 2 == 0 ? "(grete " + words + ")" : "(nothing OR " + words + ")";
    EXPECT_EQ(Found(words), "c");
    std::string nots = "ada";
    for (int i = 0; i < 99; ++i) nots = "NOT (is:away OR " + nots + ")";
    EXPECT_EQ(Found(nots), "Tb\xE9");
    std::string wide = "ada";
    for (int i = 0; i < 499; ++i) wide += i % 2 == 0 ? " OR nothing" : " OR bricks:7";
    EXPECT_EQ(Found(wide), "c");
}

}  // namespace ZEMA::testing
