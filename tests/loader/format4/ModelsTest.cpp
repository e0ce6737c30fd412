// What is in a scene: groups, joints, parts, and the corrections of old designs.
#include <gtest/gtest.h>

#include "loader/DesignCatalogue.h"
#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

TEST(Format4Models, ReadsGroupsPartsAndTheirNumbers) {
    const LoadedScene loaded(Root(Model("<Group type='6' name='a' tyre='6' axe='6' tx='5'>" +
                                        Part(7, "name='\xC3\xA4' itemNos='1,2'") + Part(7, "itemNos='\xC3\xA4'") +
                                        "</Group><Group refID='010'/><Group refID='010'/><Group refID='-1'/>"
                                        "<Joint><GroupRef groupRef='10'/><GroupRef groupRef='4294967295'/></Joint>") +
                                  Instruction(Step("", PartRef(7)))));
    ASSERT_EQ(loaded->models[0].rigids.Size(), 4U);
    EXPECT_EQ(Utf8(loaded.Group(0).name), "a");
    EXPECT_EQ(loaded.Group(0).transformation, Matrix4::FromTranslation({5, 0, 0}));
    EXPECT_EQ(loaded->models[0].joints[0].rigid1.Get(), &loaded.Group(2)) << "the later group of a number is meant";
    EXPECT_EQ(loaded->models[0].joints[0].rigid2, nullptr) << "no group has the number of none";
    EXPECT_EQ(Utf8(loaded.Part(0).name), "\xC3\xA4");
    EXPECT_EQ(Utf8(loaded.Part(0).itemNos), "1,2");
    EXPECT_TRUE(loaded.Part(1).itemNos.IsEmpty()) << "item numbers are ASCII";
    EXPECT_EQ(loaded->buildingInstructions[0].steps[0]->parts[0].part.Get(), &loaded.Part(1))
        << "the later part is meant";
}

TEST(Format4Models, ReadsJoints) {
    const ConvertedDocument document(
        Root(Model("<Group refID='1'/><Group refID='2'/><Joint><GroupRef groupRef='1'/><GroupRef groupRef='2'/></Joint>"
                   "<Joint type='HINGE'><GroupRef groupRef='1' ax='1' ay='0' zx='-1' zz='0' tx='1' ty='2' tz='3'/>"
                   "<GroupRef groupRef='2' ay='-1' zy='1' zz='0' tx='4' ty='5' tz='6'/></Joint>")));
    EXPECT_EQ(document.At("/rigidSystems/0/joints"),
              R"([{"a1":[0,1,0],"a2":[0,1,0],"rigid1":[0,0],"rigid2":[0,1],"type":1,"z1":[0,0,1],"z2":[0,0,1]},)"
              R"({"a1":[1,0,0],"a2":[0,-1,0],"rigid1":[0,0],"rigid2":[0,1],"t1":[1,2,3],"t2":[4,5,6],)"
              R"("z1":[-1,0,0],"z2":[0,1,0]}])");
    // A joint's handlers leave at the first closing "Joint", also when that closes one inside; what follows is then
    // read as if it stood in the model.
    const ConvertedDocument inside(
        Root(Model("<Group refID='1'/><Group refID='2'/><Joint><GroupRef groupRef='1'/>"
                   "<GroupRef groupRef='2'/><Joint/><Group refID='3'/></Joint><Group refID='4'/>")));
    EXPECT_EQ(inside.At("/rigidSystems/0/rigids"), "[{},{},{},{}]");
    EXPECT_EQ(inside->rigidSystems[0].joints.Size(), 1U);
}

TEST(Format4Models, ReadsSurfacesOfParts) {
    const std::pair<const char*, const char*> rows[] = {
        {"<SubMaterial surfaceID='3' materialID='5'/>", R"({"materials":[21,0,0,5]})"},
        {"<SubMaterial surfaceID='1' materialID='5'/><SubMaterial surfaceID='1' materialID='6'/>",
         R"({"materials":[21,6]})"},
        {"<SubMaterial surfaceID='0' materialID='5'/>", R"({"materials":[21]})"},
        {"<SubMaterial surfaceID='2' materialID='0'/>", R"({"materials":[21]})"},
        {"<SubMaterial><SubMaterial x='' surfaceID='1' materialID='5'/></SubMaterial>", R"({"materials":[21,5]})"},
        {"<Other><SubMaterial surfaceID='1' materialID='5'/></Other>", R"({"materials":[21]})"},
        {"<Part refID='2' materialID='1'><SubMaterial surfaceID='1' materialID='5'/></Part>", R"({"materials":[21]})"},
        {"<Decoration surfaceID='2' decorationID='5'/><Decoration surfaceID='2' decorationID='6'/>",
         R"({"decoration":[0,0,6],"materials":[21]})"},
        {"<Decoration surfaceID='1' decorationID='5'/><Decoration surfaceID='1'/>",
         R"({"decoration":[0,0],"materials":[21]})"},
        {"<Decoration decorationID='5'/>", R"({"decoration":[5],"materials":[21]})"},
        {"<Decoration surfaceID='1' decorationID='5'><Decoration surfaceID='2'/></Decoration>",
         R"({"decoration":[0,5,0],"materials":[21]})"},
    };
    for (const auto& [content, expected] : rows) {
        SCOPED_TRACE(content);
        const ConvertedDocument converted(Root(Group(Part(1, "", content))));
        auto part = nlohmann::json::parse(converted.At("/bricks/0/parts/0"));
        part.erase("bones");
        EXPECT_EQ(part.dump(), expected);
    }
}

std::string BrickSet(const std::string& version) {
    return "<BrickSet version='" + version + "'/>";
}

// A control point of this design in a document of that brick set, turned so that its own x axis is the model's -z axis.
template <class Scene>
Loaded<Scene> Corrected(std::uint32_t design, const std::string& brickSet) {
    return Loaded<Scene>(
        Root("<Meta>" + brickSet + "</Meta>" +
             Group(Part(1, "flexRefID='1' controlPoint='0' angle='90' designID='" + std::to_string(design) + "'"))));
}

TEST(Format4Models, CorrectsOldDesigns) {
    // By row of the table: the last version that still moves the design, and the next; null for a retired design.
    const std::pair<const char*, const char*> versions[] = {{"37.999.9", "38"}, {nullptr, nullptr}, {nullptr, nullptr},
                                                            {"37.999.9", "38"}, {"38.2.9", "38.3"}, {"38.999", "39"}};
    ASSERT_EQ(LegacyCorrections().size(), std::size(versions));
    for (std::size_t i = 0; i < std::size(versions); ++i) {
        SCOPED_TRACE(i);
        const LegacyCorrection& row = LegacyCorrections()[i];
        const auto& [last, next] = versions[i];
        const bool isRetired = last == nullptr;
        const LoadedScene loaded = Corrected<StorageScene>(row.design, BrickSet(isRetired ? "1" : last));
        EXPECT_EQ(loaded.Part(0).designID, isRetired ? row.successor : row.design);
        EXPECT_NEAR(loaded.Part(0).transformation.m[14], isRetired ? 0 : 0.8, 1e-6)
            << "along the part's own x axis; one correction at most";
        if (isRetired) {
            const ConvertedDocument converted = Corrected<StorageScene2>(row.design, BrickSet("1"));
            EXPECT_EQ(converted->bricks[0]->designID, row.design) << "a flexible element is what it was read as";
            EXPECT_EQ(converted->bricks[0]->parts[0]->designID, row.design);
        } else {
            EXPECT_NEAR(Corrected<StorageScene>(row.design, BrickSet(next)).Part(0).transformation.m[14], 0, 1e-6);
        }
    }
}

TEST(Format4Models, CorrectsByTheVersionOfTheBrickSet) {
    const LegacyCorrection& retired = LegacyCorrections()[1];
    const std::pair<std::string, bool> rows[] = {
        {"", false},
        {BrickSet("0.9"), false},
        {"<BrickSet/>", false},
        {BrickSet("\xC3\xA4 1"), false},
        {"<Brand version='1'/>", false},
        {BrickSet("1") + BrickSet("0"), false},
        {BrickSet("1") + BrickSet("x"), true},
        {"<BrickSet x='0' version='1' y='0'/>", true},
    };
    for (const auto& [brickSet, corrected] : rows) {
        SCOPED_TRACE(brickSet);
        const std::uint32_t expected = corrected ? retired.successor : retired.design;
        EXPECT_EQ(Corrected<StorageScene>(retired.design, brickSet).Part(0).designID, expected);
    }
    const LoadedScene late(Root(Group(Part(1, "designID='" + std::to_string(retired.design) + "'")) + "<Meta>" +
                                BrickSet("1") + "</Meta>"));
    EXPECT_EQ(late.Part(0).designID, retired.design) << "it must be known when the part is read";
}

}  // namespace
}  // namespace ZEMA::testing
