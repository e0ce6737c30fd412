#include <gtest/gtest.h>

#include "host/documents/DocumentRecord.h"
#include "host/print/JsonWriter.h"
#include "host/print/PropertyList.h"

namespace ZEMA::testing {

namespace {

std::string Written(RecordFormat format, const std::vector<DocumentRecord>& records) {
    const std::unique_ptr<RecordWriter> writer = NewRecordWriter(format, records.size() > 1);
    std::string text = writer->Head();
    for (const DocumentRecord& record : records) text += writer->Record(record);
    return text + writer->Tail();
}

const DocumentRecord kGood = {
    "a\x1B.wqf",
    true,
    {{"kMDItemVersion", {std::string("5")}},
     {"kMDItemDescription", {Value::Dictionary{{"en", {std::string("\"a\\b\"\n")}}, {"zh-Hant", {std::string("塔")}}}}},
     {"kMDItemAuthors", {Value::List{{std::string("Ada")}, {std::string("Zoë")}}}},
     {"com_zema_wqf_numberofbricks", {std::int64_t{3}}},
     {"com_zema_wqf_listofbricks", {Value::List{}}}},
    ""};
const DocumentRecord kBad = {"b\xFF", false, {}, "no \x01 way"};

// As the attribute lister of the platform prints them.
constexpr const char* kGoodText = R"(com_zema_wqf_listofbricks   = (
)
com_zema_wqf_numberofbricks = 3
kMDItemAuthors              = (
    "Ada",
    "Zoë"
)
kMDItemDescription          = {
    en = "\"a\\b\"\u000A";
    "zh-Hant" = "塔";
}
kMDItemVersion              = "5"
)";

}  // namespace

TEST(RecordText, ListsAttributesUnderTheirPaths) {
    const std::string heading = "a\\u001B.wqf:\n";
    EXPECT_EQ(Written(RecordFormat::Text, {kGood}), kGoodText);
    EXPECT_EQ(Written(RecordFormat::Text, {kBad}), "");
    EXPECT_EQ(Written(RecordFormat::Text, {kBad, kGood, kGood}), heading + kGoodText + "\n" + heading + kGoodText);
}

TEST(RecordText, WritesOneObjectForEachInput) {
    const std::string good =
        R"({"path":"a\u001b.wqf","imported":true,"attributes":{"kMDItemVersion":"5","kMDItemDescription":)"
        R"({"en":"\"a\\b\"\n","zh-Hant":"塔"},"kMDItemAuthors":["Ada","Zoë"],"com_zema_wqf_numberofbricks":3,)"
        R"("com_zema_wqf_listofbricks":[]}})";
    const std::string bad =
        "{\"path\":\"b\xEF\xBF\xBD\",\"pathBytes\":\"Yv8=\",\"imported\":false,\"attributes\":{},\"error\":\"no "
        "\\u0001 way\"}";
    EXPECT_EQ(Written(RecordFormat::Ndjson, {kGood, kBad}), good + "\n" + bad + "\n");
    EXPECT_EQ(Written(RecordFormat::Json, {kGood, kBad}), "[\n" + good + ",\n" + bad + "\n]\n");
    EXPECT_EQ(Written(RecordFormat::Json, {}), "[]\n");
    const std::string list = Written(RecordFormat::PropertyList, {{"a", true, {{"b", {std::int64_t{3}}}}, ""}, kBad});
    EXPECT_EQ(JsonText(*ReadPropertyList(list)),
              "[{\"path\":\"a\",\"imported\":true,\"attributes\":{\"b\":3}},{\"path\":\"b\xEF\xBF\xBD\","
              "\"pathBytes\":\"Yv8=\",\"imported\":false,\"attributes\":{},\"error\":\"no  way\"}]");
}

TEST(RecordText, WritesTablesThatNoSpreadsheetRuns) {
    DocumentRecord formula{
        "=1+1,2.wqf", true, {{"kMDItemAuthors", {Value::List{{std::string("-Ada")}, {std::string("Zoë")}}}}}};
    formula.repaired = true;
    EXPECT_EQ(Written(RecordFormat::Csv, {kGood, kBad, formula}),
              "path,imported,kMDItemVersion,kMDItemCreator,kMDItemDescription,kMDItemAuthors,kMDItemKeywords,"
              "com_zema_wqf_numberofbricks,com_zema_wqf_listofbricks,error,repaired,away\r\n"
              "a\x1B.wqf,true,5,,\"en: \"\"a\\b\"\"\n; zh-Hant: 塔\",Ada; Zoë,,3,,,false,false\r\n"
              "b\xEF\xBF\xBD,false,,,,,,,,no \x01 way,false,false\r\n"
              "\"'=1+1,2.wqf\",true,,,,'-Ada; Zoë,,,,,true,false\r\n");
    EXPECT_EQ(Written(RecordFormat::PathsWithZeroBytes, {kBad, kBad}), std::string("b\xFF\0b\xFF\0", 6));
}

}  // namespace ZEMA::testing
