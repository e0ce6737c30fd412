// What format 4 makes of a document, and what becomes of that in the conversion.
#include "loader/format4/ModelLoaderWQFML4.h"

#include <gtest/gtest.h>

#include <utility>

#include "loader/DesignCatalogue.h"
#include "tests/loader/DocumentCases.h"
#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

TEST(ModelLoaderWQFML4, MakesOfDocumentsWhatTheyAreCasesOf) {
    for (const char* subject : {"document", "models", "flexes", "failures", "conversion"}) {
        SCOPED_TRACE(subject);
        ExpectCases<ModelLoaderWQFML4>(std::string(ZEMA_CASES "/") + subject + ".cases");
    }
}

TEST(ModelLoaderWQFML4, SecondRootIsReadUnderAWrongOne) {
    const LoadedScene loaded("<WQFML versionMajor='5'>" + Root(Model("")) + "<Scene><Model name='x'/></Scene>" +
                             "<WQFML versionMajor='3'/></WQFML>");
    ASSERT_EQ(loaded->models.Size(), 1U);
    EXPECT_EQ(Utf8(loaded->models[0].name), "model");
    EXPECT_EQ(Descriptions(*loaded.loader), (Words{"versionError expected Version 4 actual Version 5"}))
        << "what follows the second root is skipped";
}

TEST(ModelLoaderWQFML4, KeepsWhatIsThereOfMetadataThatBreakOff) {
    const LoadedScene cut("<WQFML versionMajor='4'><Meta><E>text");
    EXPECT_FALSE(cut.succeeded);
    EXPECT_EQ(Utf8(cut->meta[0].value), "text");
}

TEST(ModelLoaderWQFML4, GoesOnBehindAFailure) {
    const std::string text = Root(
        "<Scene cameraRefID='9'><Model><Group refID='1'><Part refID='1' materialID='21'/>"
        "<Part><SubMaterial surfaceID='1' materialID='2'/></Part></Group></Model></Scene>" +
        Instruction(Step("", PartRef(9))));
    const Words errors{"cameraError error detail nonExistingCamera", "partError error detail missingRefID",
                       "biError error detail nonExistingPart"};
    const LoadedScene loaded(text);
    EXPECT_EQ(Descriptions(*loaded.loader), errors);
    EXPECT_EQ(loaded.loader->errorMask, 8U | 32U | 256U);
    ASSERT_EQ(loaded.Group(0).parts.Size(), 1U) << "the part is dropped";
    EXPECT_EQ(loaded.Part(0).materials.Size(), 1U) << "and what was in it is nobody's";
    EXPECT_EQ(Descriptions(*LoadedScene(Broken(text, "</WQFML>", "")).loader).size(), 4U) << "the parser's comes last";

    EXPECT_TRUE(loaded.loader->LoadScene(Bytes(Root("")), loaded.scene.Get(), 0));
    EXPECT_TRUE(loaded.loader->errors.Empty() && loaded.loader->errorMask == 0 && loaded->models.Empty());
    const ConvertedDocument converted(text);
    EXPECT_TRUE(converted->meta.Empty() && converted->rigidSystems.Empty()) << "a failed load converts nothing";
}

TEST(ModelLoaderWQFML4, ReadsGroupsPartsAndTheirNumbers) {
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

TEST(ModelLoaderWQFML4, CorrectsOldDesigns) {
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

TEST(ModelLoaderWQFML4, CorrectsByTheVersionOfTheBrickSet) {
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

std::string FlexPart(int refID, int controlPoint, const std::string& attributes = "") {
    return Part(refID, "flexRefID='1' controlPoint='" + std::to_string(controlPoint) + "' " + attributes);
}

RefPointer<StorageScene2> Converted(const LoadedScene& loaded) {
    const auto target = New<StorageScene2>();
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    return target;
}

// What the first step of the first instruction holds.
const BasicArray<RefPointer<StorageScene2::BIEvent>>& EventsOf(const StorageScene2& scene) {
    return static_cast<const StorageScene2::BIStep&>(*scene.buildingInstructions[0].events[0]).events;
}

TEST(Conversion, SanitisesPlacements) {
    const LoadedScene loaded(Root(Group(Part(1, "tx='1'")) + Instruction(Step("", PartRef(1, "exploded=''")))));
    auto& group = loaded.Group(0).transformation;
    group.m[0] = 0;
    auto& part = loaded.Part(0).transformation;
    part.m[5] = 3;
    loaded->buildingInstructions[0].steps[0]->parts[0].transformation.m[10] = -2;
    const RefPointer<StorageScene2> target = Converted(loaded);
    EXPECT_EQ(group, Matrix4()) << "in the old scene, too";
    EXPECT_EQ(part, Matrix4::FromTranslation({1, 0, 0}));
    const StorageScene2::Rigid& rigid = *target->rigidSystems[0].rigids[0];
    EXPECT_EQ(rigid.transformation, Matrix4());
    EXPECT_EQ(rigid.bones[0]->transformation, Matrix4::FromTranslation({1, 0, 0}));
    EXPECT_EQ(rigid.bones[0]->part, target->bricks[0]->parts[0].Get());
    EXPECT_EQ(rigid.bones[0]->part->brick, target->bricks[0].Get());
    EXPECT_EQ(static_cast<const StorageScene2::BIPart&>(*EventsOf(*target)[0]).transformation.m[10], -1);
}

TEST(Conversion, ExchangesCamerasAndMetadata) {
    const LoadedScene loaded(
        Root("<Meta><Brand/></Meta><Cameras><Camera refID='1'/></Cameras><Scene cameraRefID='1'/>"));
    const RefPointer<StorageScene2::Camera> camera = loaded->cameras[0];
    const auto target = New<StorageScene2>();
    target->meta.Resize(2);
    loaded->name = "name";
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    EXPECT_EQ(target->cameras[0], camera);
    EXPECT_EQ(target->bricksCamera, camera);
    EXPECT_EQ(Utf8(target->name), "name");
    EXPECT_EQ(target->meta.Size(), 1U);
    EXPECT_EQ(loaded->meta.Size(), 2U);
    EXPECT_TRUE(loaded->cameras.Empty());
}

// The same objects a second time, their control points exchanged: what a table kept would be found again.
TEST(Conversion, StartsWithEmptyTables) {
    const LoadedScene loaded(Root(Group(Part(1) + FlexPart(2, 0, "assemblyRefID='1' assemblyID='2'") +
                                        FlexPart(3, 1, "assemblyRefID='1' assemblyID='2'")) +
                                  Instruction(Step("", PartRef(2)))));
    ModelLoaderWQFML4& loader = *loaded.loader;
    const RefPointer<StorageScene2> first = Converted(loaded);
    auto& points = loaded.Part(1).flex->parts;
    std::swap(points[0], points[1]);
    const RefPointer<StorageScene2> second = Converted(loaded);
    ASSERT_EQ(second->bricks.Size(), 2U);
    const StorageScene2::Part& part = *second->bricks[1]->parts[0];
    EXPECT_EQ(part.bones[0], second->rigidSystems[0].rigids[0]->bones[2]);
    EXPECT_EQ(EventsOf(*second).Size(), 1U);
    EXPECT_EQ(loader.partParts.Size(), 3U) << "they keep their contents";
    EXPECT_EQ(loader.placedFlexes.Size(), 1U);

    EXPECT_TRUE(loader.Load(Bytes(Root("")), New<StorageScene2>().Get(), 0));
    EXPECT_TRUE(loader.partParts.Empty() && loader.flexParts.Empty() && loader.assemblyBricks.Empty());
    EXPECT_TRUE(loader.placedFlexes.Empty());
}

}  // namespace
}  // namespace ZEMA::testing
