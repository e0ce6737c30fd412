#include "host/print/PropertyList.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/print/JsonWriter.h"

namespace ZEMA::testing {

namespace {

std::string ReadBack(const std::string& text) {
    const Result<Value> value = ReadPropertyList(text);
    return value ? JsonText(*value) : value.Why().text;
}

std::string List(const std::string& content) {
    return PropertyListHead() + content + PropertyListTail();
}

std::string Nested(int depth) {
    std::string begins, ends;
    for (int i = 0; i < depth; ++i) begins += "<array>", ends += "</array>";
    return List(begins + ends);
}

}  // namespace

TEST(PropertyList, ReadsEachKindOfValue) {
    const struct {
        std::string list;
        std::string read;
    } rows[] = {
        {List("<dict><key>b</key><array><true/><false/><integer>-7</integer></array><key>a</key><string>&lt;x</"
              "string></dict>"),
         R"({"b":[true,false,-7],"a":"<x"})"},
        {List("<string/>"), R"("")"},
        {List("<dict/>"), "{}"},
        {List("<integer>7x</integer>"), "'7x' is no integer"},
        {List("<dict><key>a</key></dict>"), "the key 'a' has no value"},
        {List("<date>2024</date>"), "it holds an element <date>, which is not understood"},
        {List(""), "it is no property list"},
        {List("<true/><true/>"), "it is no property list"},
        {"<list><true/></list>", "it is no property list"},
        {"bplist00", "it is not well-formed XML"},
        {Nested(32), std::string(32, '[') + std::string(32, ']')},
        {Nested(33), "it is nested too deeply"},
        {Nested(100000), "it is nested too deeply"},
    };
    for (const auto& row : rows) EXPECT_EQ(ReadBack(row.list), row.read);
}

TEST(PropertyList, WritesWhatAReaderFindsAgain) {
    const Value value = {Value::Dictionary{{"<&>", {std::string("a\tb\"]]>")}},
                                           {"list", {Value::List{{std::int64_t{5}}, {true}, {Value::List{}}}}},
                                           {"empty", {Value::Dictionary{}}}}};
    std::string text;
    AppendPropertyListValue(value, 0, text);
    EXPECT_EQ(ReadBack(List(text)), JsonText(value));
    text.clear();
    for (const double number : {2.5, std::nan(""), -HUGE_VAL}) AppendPropertyListValue({number}, 0, text);
    EXPECT_EQ(text, "<real>2.5</real>\n<real>nan</real>\n<real>-infinity</real>\n");
    text.clear();
    const std::string outside = std::string("a\x01\x1B\xEF\xBF\xBF") + "b\xEF\xBF\xBD\r\n" + std::string("\0c", 2);
    AppendPropertyListValue({outside}, 1, text);
    EXPECT_EQ(text, "\t<string>ab\xEF\xBF\xBD&#13;\nc</string>\n") << "what XML cannot hold is left out";
}

}  // namespace ZEMA::testing
