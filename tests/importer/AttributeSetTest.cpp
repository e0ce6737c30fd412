#include "importer/AttributeSet.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "tests/importer/Attributes.h"

namespace ZEMA::testing {

namespace {

// "Author name=Ada name=Bob: text; ..." is an entry with two attributes and a text, and others.
void ReadMeta(const std::string& text, StorageScene2& scene) {
    std::istringstream entries(text);
    for (std::string entry; std::getline(entries >> std::ws, entry, ';');) {
        StorageScene2::Meta meta;
        std::istringstream words(entry.substr(0, entry.find(": ")));
        std::string word;
        words >> word;
        meta.name = word.c_str();
        while (words >> word) {
            const std::size_t middle = word.find('=');
            meta.attributes.PushBack({String(word.substr(0, middle).c_str()), String(word.substr(middle + 1).c_str())});
        }
        if (entry.find(": ") != std::string::npos) meta.value = entry.substr(entry.find(": ") + 2).c_str();
        scene.meta.PushBack(meta);
    }
}

// The scene is gone when its attributes are looked at.
std::string Written(const std::string& meta, const std::vector<std::uint32_t>& designs = {}) {
    const Attributes attributes = NewAttributes();
    const RefPointer<StorageScene2> scene = New<StorageScene2>();
    ReadMeta(meta, *scene);
    for (const std::uint32_t design : designs) {
        scene->bricks.PushBack(New<StorageScene2::Brick>());
        scene->bricks.Back()->designID = design;
    }
    WriteAttributes(*scene, Version(5), attributes.Get());
    return TextOf(attributes);
}

// The two brick attributes, what is between them and the version, and that.
std::string Text(const std::string& list, const std::string& count, const std::string& rest) {
    return R"({"com_zema_wqf_listofbricks":[)" + list + R"(],"com_zema_wqf_numberofbricks":)" + count + "," + rest +
           R"("kMDItemVersion":"5"})";
}

}  // namespace

TEST(AttributeSet, WritesWhatTheMetadataTell) {
    const struct {
        const char* what;
        const char* meta;
        const char* rest;
    } rows[] = {
        {"a model without metadata has the version and its bricks", "", ""},
        {"entries that mean nothing here", "BrickSet version=38; brand name=x", ""},
        {"a major version alone", "Application name=B versionMajor=4", R"("kMDItemCreator":"B 4",)"},
        {"both", "Application versionMinor=2 versionMajor=4 name=B", R"("kMDItemCreator":"B 4.2",)"},
        {"a minor version alone is not told", "Application name=B versionMinor=2", R"("kMDItemCreator":"B",)"},
        {"the later attribute of one name counts, and only that very name",
         "Application name=A name=B Name=C versionmajor=1", R"("kMDItemCreator":"B",)"},
        {"the first application that has a name", "Application versionMajor=1; Application name=A; Application name=B",
         R"("kMDItemCreator":"A",)"},
        {"each brand once, as first seen", "Brand name=Z; Brand name=A name=Z; Brand x=y",
         R"("kMDItemKeywords":["Z","A"],)"},
        {"authors are told apart by case, and may be empty",
         "Author name=ada name=Ada; Author name=", R"("kMDItemAuthors":["ada","Ada",""],)"},
        {"a description without a language is English, and the first of each language stays",
         "Description: one; Description lang=en: two; Description lang=en lang=de Lang=fr: drei; Description lang=",
         R"("kMDItemDescription":{"":"","de":"drei","en":"one"},)"},
    };
    for (const auto& row : rows) EXPECT_EQ(Written(row.meta), Text("", "0", row.rest)) << row.what;
}

TEST(AttributeSet, CountsEveryBrickAndSortsDesignsAsTextEachOnce) {
    EXPECT_EQ(Written("", {9, 100, 10, 1, 10}), Text(R"("1","10","100","9")", "5", ""));
    EXPECT_EQ(Written("", {0xFFFFFFFF, 0}), Text(R"("0","4294967295")", "2", "")) << "no number is negative";
}

// Anything that looks through a list for each of its entries takes minutes here.
TEST(AttributeSet, GathersFromLargeModelsInTime) {
    std::string authors, list;
    std::vector<std::uint32_t> designs;
    for (int i = 100000; i < 300000; ++i) {
        const std::string number = std::to_string(i);
        authors += "Author name=" + number + ";";
        designs.push_back(static_cast<std::uint32_t>(i));
        list += (list.empty() ? "\"" : ",\"") + number + "\"";
    }
    EXPECT_EQ(Written(authors, designs), Text(list, "200000", R"("kMDItemAuthors":[)" + list + "],"));
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
