// The way from element to element: what is read where, and what is skipped; cameras, metadata and steps.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

Words NamesOf(const BasicArray<StorageScene::Model>& models) {
    Words names;
    for (const auto& model : models) names.push_back(Utf8(model.name));
    return names;
}

TEST(Format4Document, SkipsWhatItDoesNotKnow) {
    const std::string model = "<Model name='wrong'/>";
    for (const std::string& content :
         {"<Other>" + model + "<Scene>" + model + "</Scene></Other>", Root(Model("")),
          "<Scene><Other>" + model + "</Other></Scene>", "<scene>" + model + "</scene>", model}) {
        SCOPED_TRACE(content);
        const LoadedScene loaded(Root(content + Model("")));
        EXPECT_TRUE(loaded.succeeded);
        EXPECT_EQ(NamesOf(loaded->models), Words{"model"});
    }
}

TEST(Format4Document, SecondRootIsReadUnderAWrongOne) {
    const LoadedScene loaded("<WQFML versionMajor='5'>" + Root(Model("")) + "<Scene><Model name='x'/></Scene>" +
                             "<WQFML versionMajor='3'/></WQFML>");
    EXPECT_EQ(NamesOf(loaded->models), Words{"model"});
    EXPECT_EQ(Descriptions(*loaded.loader), (Words{"versionError expected Version 4 actual Version 5"}))
        << "what follows the second root is skipped";
}

TEST(Format4Document, ReadsCamerasInSectionsOfAnyOrderAndNumber) {
    const LoadedScene loaded(Root(
        "<Cameras>"
        "<Camera refID='1' name='\xC3\xA4' distance='2.5' fieldOfView='45' orthographic='true' tx='1' ty='2' tz='3'>"
        "<Camera refID='2' orthographic='TRUE'/><Other><Camera refID='3'/></Other></Camera>"
        "</Cameras><Scene cameraRefID='1'/><Cameras><Camera refID='1' name='again'/></Cameras>"
        "<Scene cameraRefID='1'><Model name='a'/><Model/></Scene>"));
    EXPECT_EQ(NamesOf(loaded->models), (Words{"a", ""}));
    ASSERT_EQ(loaded->cameras.Size(), 3U) << "one in a camera counts, one below an unknown element does not";
    const StorageScene2::Camera& camera = *loaded->cameras[0];
    EXPECT_EQ(Utf8(camera.name), "\xC3\xA4");
    EXPECT_EQ(camera.distance, 2.5F);
    EXPECT_EQ(camera.fieldOfView, 45);
    EXPECT_TRUE(camera.orthographic);
    EXPECT_EQ(camera.transformation, Matrix4::FromTranslation({1, 2, 3}));
    EXPECT_FALSE(loaded->cameras[1]->orthographic);
    EXPECT_EQ(loaded->cameras[1]->fieldOfView, 80);
    EXPECT_EQ(loaded->camera, loaded->cameras[2]) << "the later camera of a number is meant";
}

LoadedScene WithMeta(const std::string& entries) {
    return LoadedScene(Root("<Meta>" + entries + "</Meta>"));
}

TEST(Format4Document, GathersMetadataTextUpToTheFirstElement) {
    const std::pair<const char*, const char*> rows[] = {
        {" a\n b ", " a\n b "},
        {"a<!-- x -->&amp;<![CDATA[<b>]]>&#228;", "a&<b>\xC3\xA4"},
        {"a<x>b<y>c</y></x>d<z/>e", "a"},
        {"<x>b</x>c", ""},
    };
    for (const auto& [content, value] : rows) {
        SCOPED_TRACE(content);
        const LoadedScene loaded = WithMeta("<E>" + std::string(content) + "</E> between <F>f</F>");
        ASSERT_EQ(loaded->meta.Size(), 2U);
        EXPECT_EQ(Utf8(loaded->meta[0].value), value);
        EXPECT_EQ(Utf8(loaded->meta[1].value), "f");
    }
    const LoadedScene cut("<WQFML versionMajor='4'><Meta><E>text");
    EXPECT_FALSE(cut.succeeded);
    EXPECT_EQ(Utf8(cut->meta[0].value), "text") << "what is there of an entry that breaks off is kept";
}

TEST(Format4Document, TakesNamesAndAttributesOfMetadataAsAscii) {
    const LoadedScene loaded = WithMeta("<\xC3\xA4 k\xC3\xA4='v' k='\xC3\xA4' c='1'>\xC3\xA4</\xC3\xA4>");
    const StorageScene2::Meta& entry = loaded->meta[0];
    ASSERT_EQ(entry.attributes.Size(), 3U);
    EXPECT_TRUE(entry.name.IsEmpty() && entry.attributes[0].key.IsEmpty() && entry.attributes[1].value.IsEmpty());
    EXPECT_EQ(Utf8(entry.attributes[0].value), "v");
    EXPECT_EQ(Utf8(entry.attributes[2].key), "c");
    EXPECT_EQ(Utf8(entry.value), "\xC3\xA4");
}

TEST(Format4Document, NestsSteps) {
    const LoadedScene loaded(
        Root(Group(Part(1)) +
             Instruction("<Other>" + Step("") + "</Other>" +
                         Step("name='\xC3\xA4'", "<Other>" + Step("") + "</Other>" + Step("") +
                                                     "<PartRef partRefID='1'>" + Step("name='b'") + "</PartRef>")) +
             Instruction("")));
    EXPECT_TRUE(loaded.succeeded);
    ASSERT_EQ(loaded->buildingInstructions.Size(), 2U);
    EXPECT_EQ(Utf8(loaded->buildingInstructions[0].name), "bi");
    ASSERT_EQ(loaded->buildingInstructions[0].steps.Size(), 1U);
    const StorageScene::BIStep& step = *loaded->buildingInstructions[0].steps[0];
    EXPECT_EQ(Utf8(step.name), "\xC3\xA4");
    ASSERT_EQ(step.steps.Size(), 2U) << "a step in a part reference counts";
    EXPECT_EQ(Utf8(step.steps[1]->name), "b");
}

}  // namespace
}  // namespace ZEMA::testing
