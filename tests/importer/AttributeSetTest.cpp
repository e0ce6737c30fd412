#include "importer/AttributeSet.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/importer/Attributes.h"

namespace ZEMA::testing {

namespace {

using Meta = StorageScene2::Meta;

Meta Entry(const char* name, const std::vector<std::pair<const char*, const char*>>& attributes,
           const char* value = "") {
    Meta entry;
    entry.name = name;
    entry.value = value;
    for (const auto& [key, text] : attributes) entry.attributes.PushBack({String(key), String(text)});
    return entry;
}

// The scene is gone when its attributes are looked at.
std::string Written(const std::vector<Meta>& meta, const std::vector<std::uint32_t>& designs,
                    std::uint32_t format = 5) {
    const Attributes attributes = NewAttributes();
    const RefPointer<StorageScene2> scene = New<StorageScene2>();
    for (const Meta& entry : meta) scene->meta.PushBack(entry);
    for (const std::uint32_t design : designs) {
        scene->bricks.PushBack(New<StorageScene2::Brick>());
        scene->bricks.Back()->designID = design;
    }
    WriteAttributes(*scene, Version(format), attributes.Get());
    return TextOf(attributes);
}

// What is written of a model without bricks, with the texts of `rest` between the brick attributes and the version.
std::string WithoutBricks(const std::string& rest) {
    return R"({"com_zema_wqf_listofbricks":[],"com_zema_wqf_numberofbricks":0,)" + rest + R"("kMDItemVersion":"5"})";
}

}  // namespace

TEST(AttributeSet, WritesWhatTheMetadataTell) {
    const struct {
        const char* what;
        std::vector<Meta> meta;
        const char* rest;
    } rows[] = {
        {"a model without metadata has the version and its bricks", {}, ""},
        {"entries that mean nothing here",
         {Entry("BrickSet", {{"version", "38"}}), Entry("brand", {{"name", "x"}})},
         ""},
        {"a major version without a minor one",
         {Entry("Application", {{"name", "Builder"}, {"versionMajor", "4"}})},
         R"("kMDItemCreator":"Builder 4",)"},
        {"both",
         {Entry("Application", {{"versionMinor", "2"}, {"versionMajor", "4"}, {"name", "Builder"}})},
         R"("kMDItemCreator":"Builder 4.2",)"},
        {"a minor version without a major one is not told",
         {Entry("Application", {{"name", "Builder"}, {"versionMinor", "2"}})},
         R"("kMDItemCreator":"Builder",)"},
        {"the later attribute of one name counts, and only that very name",
         {Entry("Application", {{"name", "A"}, {"name", "B"}, {"Name", "C"}, {"versionmajor", "1"}})},
         R"("kMDItemCreator":"B",)"},
        {"the first application that has a name",
         {Entry("Application", {{"versionMajor", "1"}}), Entry("Application", {{"name", "First"}}),
          Entry("Application", {{"name", "Second"}})},
         R"("kMDItemCreator":"First",)"},
        {"each brand once, as first seen",
         {Entry("Brand", {{"name", "Z"}}), Entry("Brand", {{"name", "A"}, {"name", "Z"}}),
          Entry("Brand", {{"x", "y"}})},
         R"("kMDItemKeywords":["Z","A"],)"},
        {"authors are told apart by case, and may be empty",
         {Entry("Author", {{"name", "ada"}, {"name", "Ada"}}), Entry("Author", {{"name", ""}})},
         R"("kMDItemAuthors":["ada","Ada",""],)"},
        {"a description without a language is English, and the first of each language stays",
         {Entry("Description", {}, "one"), Entry("Description", {{"lang", "en"}}, "two"),
          Entry("Description", {{"lang", "en"}, {"lang", "de"}, {"Lang", "fr"}}, "drei"),
          Entry("Description", {{"lang", ""}}, "")},
         R"("kMDItemDescription":{"":"","de":"drei","en":"one"},)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Written(row.meta, {}), WithoutBricks(row.rest));
    }
}

TEST(AttributeSet, CountsAndSortsBricks) {
    const struct {
        const char* what;
        std::vector<std::uint32_t> designs;
        const char* list;
        const char* number;
    } rows[] = {
        {"every brick counts, every design is listed once", {4100, 42, 4100}, R"(["4100","42"])", "3"},
        {"sorted as text", {9, 100, 10, 1}, R"(["1","10","100","9"])", "4"},
        {"the largest number is not negative", {0xFFFFFFFF, 0}, R"(["0","4294967295"])", "2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Written({}, row.designs, 4), std::string(R"({"com_zema_wqf_listofbricks":)") + row.list +
                                                   R"(,"com_zema_wqf_numberofbricks":)" + row.number +
                                                   R"(,"kMDItemVersion":"4"})");
    }
}

// Anything that looks through a list for each of its entries takes minutes here.
TEST(AttributeSet, GathersFromLargeModelsInTime) {
    std::vector<Meta> authors;
    std::vector<std::uint32_t> designs;
    std::string list;
    for (int i = 100000; i < 300000; ++i) {
        const std::string number = std::to_string(i);
        authors.push_back(Entry("Author", {{"name", number.c_str()}}));
        designs.push_back(static_cast<std::uint32_t>(i));
        list += (list.empty() ? "\"" : ",\"") + number + "\"";
    }
    EXPECT_EQ(Written(authors, designs), R"({"com_zema_wqf_listofbricks":[)" + list +
                                             R"(],"com_zema_wqf_numberofbricks":200000,)" + R"("kMDItemAuthors":[)" +
                                             list + R"(],"kMDItemVersion":"5"})");
}

TEST(AttributeSet, ReplacesOnlyBrickAttributesThatTheServiceKnows) {
    const Attributes written = NewAttributes();
    WriteAttributes(*New<StorageScene2>(), Version(5), written.Get());
    const Attributes services[] = {NewAttributes(), NewAttributes()};
    for (const Attributes& service : services) {
        CFDictionaryAddValue(service.Get(), CFSTR("kMDItemVersion"), CFSTR("7"));
        CFDictionaryAddValue(service.Get(), CFSTR("com_zema_wqf_numberofbricks"), CFSTR("many"));
        CFDictionaryAddValue(service.Get(), CFSTR("com_zema_wqf_listofbricks"), CFSTR("all"));
    }
    HandOverAttributes(written.Get(), services[0].Get());
    WriteAttributes(*New<StorageScene2>(), Version(5), services[1].Get());
    for (const Attributes& service : services) {
        EXPECT_EQ(TextOf(service),
                  R"({"com_zema_wqf_listofbricks":[],"com_zema_wqf_numberofbricks":0,"kMDItemVersion":"7"})");
    }
}

}  // namespace ZEMA::testing
