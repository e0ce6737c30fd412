// The way from element to element: what is read where, and what is skipped.
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

TEST(Format4Document, ReadsSectionsInAnyOrderAndNumber) {
    const LoadedScene loaded(Root(Model("") + "<Cameras><Camera refID='1'/></Cameras><Scene cameraRefID='1'>" +
                                  "<Model name='b'/><Model/></Scene><Cameras><Camera refID='2'/></Cameras>"));
    EXPECT_EQ(NamesOf(loaded->models), (Words{"model", "b", ""}));
    EXPECT_EQ(loaded->cameras.Size(), 2U);
    EXPECT_EQ(loaded->camera, loaded->cameras[0]);
}

TEST(Format4Document, ReadsCameras) {
    const LoadedScene loaded(Root(
        "<Cameras>"
        "<Camera refID='1' name='\xC3\xA4' distance='2.5' fieldOfView='45' orthographic='true' tx='1' ty='2' tz='3'>"
        "<Camera refID='2' orthographic='TRUE'/><Other><Camera refID='3'/></Other></Camera>"
        "<Camera refID='1' name='again'/></Cameras><Scene cameraRefID='1'/>"));
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

TEST(Format4Document, ReadsGroupsAndTheirNumbers) {
    const LoadedScene loaded(
        Root(Model("<Group name='a' tx='5'/><Group refID='1' name='b'/><Group refID='1' name='c'/>"
                   "<Group refID='-1' name='d'/>"
                   "<Joint><GroupRef groupRef='1'/><GroupRef groupRef='4294967295'/></Joint>")));
    ASSERT_EQ(loaded->models[0].rigids.Size(), 4U);
    EXPECT_EQ(loaded.Group(0).transformation, Matrix4::FromTranslation({5, 0, 0}));
    EXPECT_EQ(loaded->models[0].joints[0].rigid1, loaded->models[0].rigids[2]);
    EXPECT_EQ(loaded->models[0].joints[0].rigid2, nullptr) << "no group has the number of none";
}

// A joint's handlers leave at the first closing "Joint", also when that closes one inside; what follows is then read as
// if it stood in the model.
TEST(Format4Document, JointEndsAtTheFirstClosingTag) {
    const LoadedScene loaded(
        Root(Model("<Group refID='1'/><Group refID='2'/><Joint><GroupRef groupRef='1'/>"
                   "<GroupRef groupRef='2'/><Joint/><Group refID='3'/></Joint><Group refID='4'/>")));
    EXPECT_TRUE(loaded.succeeded);
    EXPECT_EQ(loaded->models[0].joints.Size(), 1U);
    EXPECT_EQ(loaded->models[0].rigids.Size(), 4U);
}

using Steps = BasicArray<RefPointer<StorageScene::BIStep>>;

// Names of steps, nested ones in parentheses.
std::string Outline(const Steps& steps) {
    std::string outline;
    for (const auto& step : steps) {
        outline += Utf8(step->name);
        if (!step->steps.Empty()) outline.append("(").append(Outline(step->steps)).append(")");
    }
    return outline;
}

TEST(Format4Document, NestsSteps) {
    const std::string steps =
        Step("name='a'", Step("name='b'") + "<Other>" + Step("name='x'") + "</Other>" + "<PartRef partRefID='1'>" +
                             Step("name='c'", Step("name='\xC3\xA4'")) + "</PartRef>") +
        "<Other/>" + Step("name='e'");
    const LoadedScene loaded(Root(Group(Part(1)) + Instruction(steps) + Instruction("")));
    EXPECT_TRUE(loaded.succeeded);
    ASSERT_EQ(loaded->buildingInstructions.Size(), 2U);
    EXPECT_EQ(Utf8(loaded->buildingInstructions[0].name), "bi");
    EXPECT_EQ(Outline(loaded->buildingInstructions[0].steps), "a(bc(\xC3\xA4))e")
        << "a step in a part reference counts";
}

LoadedScene WithMeta(const std::string& entries) {
    return LoadedScene(Root("<Meta>" + entries + "</Meta>"));
}

TEST(Format4Meta, CollectsTextUpToTheFirstElement) {
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
}

TEST(Format4Meta, TakesNamesAndAttributesAsAscii) {
    const LoadedScene loaded = WithMeta("<\xC3\xA4 k\xC3\xA4='v' k='\xC3\xA4' c='1'>\xC3\xA4</\xC3\xA4>");
    ASSERT_EQ(loaded->meta.Size(), 1U);
    ASSERT_EQ(loaded->meta[0].attributes.Size(), 3U);
    EXPECT_TRUE(loaded->meta[0].name.IsEmpty());
    EXPECT_TRUE(loaded->meta[0].attributes[0].key.IsEmpty());
    EXPECT_TRUE(loaded->meta[0].attributes[1].value.IsEmpty());
    EXPECT_EQ(Utf8(loaded->meta[0].value), "\xC3\xA4");
}

TEST(Format4Meta, KeepsTheTextOfAnEntryThatBreaksOff) {
    const LoadedScene loaded("<WQFML versionMajor='4'><Meta><E>text");
    EXPECT_FALSE(loaded.succeeded);
    ASSERT_EQ(loaded->meta.Size(), 1U);
    EXPECT_EQ(Utf8(loaded->meta[0].value), "text");
}

}  // namespace
}  // namespace ZEMA::testing
