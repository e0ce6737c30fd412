// What becomes of a format-4 scene in the form of format 5.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

using Numbers = std::vector<unsigned long>;

std::string FlexPart(int refID, int controlPoint, const std::string& attributes = "") {
    return Part(refID, "flexRefID='1' controlPoint='" + std::to_string(controlPoint) + "' tx='" +
                           std::to_string(controlPoint) + "' " + attributes);
}

Numbers DesignsOf(const BasicArray<RefPointer<StorageScene2::Brick>>& bricks) {
    Numbers designs;
    for (const auto& brick : bricks) designs.push_back(brick->designID);
    return designs;
}

float X(const RefPointer<StorageScene2::Bone>& bone) {
    return bone->transformation.m[12];
}

// "S" and name for a step with what is in it in parentheses, "C" for a camera, "P" and design for a part.
std::string Outline(const BasicArray<RefPointer<StorageScene2::BIEvent>>& events) {
    std::string outline;
    for (const auto& event : events) {
        if (event->type == StorageScene2::BIEvent::kStep) {
            const auto& step = static_cast<const StorageScene2::BIStep&>(*event);
            outline.append("S").append(Utf8(step.name)).append("(").append(Outline(step.events)).append(")");
        } else if (event->type == StorageScene2::BIEvent::kCamera) {
            outline += "C";
        } else {
            const auto& part = *static_cast<const StorageScene2::BIPart&>(*event).part;
            outline.append("P").append(std::to_string(part.designID));
        }
    }
    return outline;
}

TEST(Conversion, GivesEachPartABrickAndEachGroupARigid) {
    const ConvertedDocument document(
        Root(Group(Part(1, "designID='10' itemNos='1010'") + Part(2, "designID='20'")) + Model("")));
    EXPECT_TRUE(document.succeeded);
    EXPECT_EQ(DesignsOf(document->bricks), (Numbers{10, 20}));
    EXPECT_EQ(Utf8(document->bricks[0]->itemNos), "1010");
    ASSERT_EQ(document->rigidSystems.Size(), 2U);
    ASSERT_EQ(document->rigidSystems[0].rigids.Size(), 1U);
    const StorageScene2::Rigid& rigid = *document->rigidSystems[0].rigids[0];
    ASSERT_EQ(rigid.bones.Size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        const StorageScene2::Brick& brick = *document->bricks[i];
        ASSERT_EQ(brick.parts.Size(), 1U);
        const StorageScene2::Part& part = *brick.parts[0];
        EXPECT_EQ(part.designID, brick.designID);
        EXPECT_EQ(part.brick, &brick);
        ASSERT_EQ(part.bones.Size(), 1U);
        EXPECT_EQ(part.bones[0], rigid.bones[i]);
        EXPECT_EQ(part.bones[0]->part, &part);
    }
}

TEST(Conversion, GivesAnAssemblyOneBrick) {
    const std::string assembly = "assemblyRefID='1' assemblyID='99' designID='";
    const ConvertedDocument document(
        Root(Group(Part(1, assembly + "1' itemNos='a'") + Part(2, "designID='7'") +
                   Part(3, assembly + "2' itemNos='b'") + FlexPart(4, 0, assembly + "3'"))));
    EXPECT_EQ(DesignsOf(document->bricks), (Numbers{99, 7}));
    EXPECT_EQ(Utf8(document->bricks[0]->itemNos), "a");
    ASSERT_EQ(document->bricks[0]->parts.Size(), 3U);
    EXPECT_EQ(document->bricks[0]->parts[2]->designID, 3U);
    EXPECT_EQ(document->bricks[0]->parts[2]->brick, document->bricks[0].Get());
}

TEST(Conversion, GivesAFlexOnePartOfSeveralBones) {
    const ConvertedDocument document(
        Root(Model("<Group refID='1'>" + FlexPart(1, 2, "designID='5' itemNos='a'") + FlexPart(2, 0, "designID='6'") +
                   "</Group><Group refID='2' tx='100'>" + FlexPart(3, 1) + "</Group>")));
    EXPECT_EQ(DesignsOf(document->bricks), Numbers{5});
    EXPECT_EQ(Utf8(document->bricks[0]->itemNos), "a");
    ASSERT_EQ(document->bricks[0]->parts.Size(), 1U);
    const StorageScene2::Part& part = *document->bricks[0]->parts[0];
    ASSERT_EQ(part.bones.Size(), 3U);
    EXPECT_EQ(X(part.bones[0]), 0);
    EXPECT_EQ(X(part.bones[1]), 101) << "in its own group";
    EXPECT_EQ(X(part.bones[2]), 2);
    EXPECT_EQ(document->rigidSystems[0].rigids[1]->bones[0], part.bones[1]);
}

TEST(Conversion, BoneOfAReplacedPartBelongsToItsRigidAlone) {
    const ConvertedDocument document(Root(Group(FlexPart(1, 0) + FlexPart(2, 0, "ty='5'"))));
    const StorageScene2::Part& part = *document->bricks[0]->parts[0];
    const auto& bones = document->rigidSystems[0].rigids[0]->bones;
    ASSERT_EQ(bones.Size(), 2U);
    ASSERT_EQ(part.bones.Size(), 1U);
    EXPECT_EQ(part.bones[0], bones[1]);
    EXPECT_EQ(bones[0]->part, &part);
}

TEST(Conversion, PlacesBonesInTheModel) {
    // The part's placement acts first.
    const ConvertedDocument document(
        Root(Model("<Group angle='90' az='1' ay='0' tx='5'>" + Part(1, "tx='1' tz='3'") + "</Group>")));
    const Vector3 position = document->bricks[0]->parts[0]->bones[0]->transformation.Translation();
    EXPECT_NEAR(position.x, 5, 1e-5);
    EXPECT_NEAR(position.y, 1, 1e-5);
    EXPECT_NEAR(position.z, 3, 1e-5);
}

TEST(Conversion, SanitisesPlacements) {
    const LoadedScene loaded(Root(Group(Part(1, "tx='1'")) + Instruction(Step("", PartRef(1, "exploded=''")))));
    auto& group = loaded.Group(0).transformation;
    group.m[0] = 0;
    auto& part = loaded.Part(0).transformation;
    part.m[5] = 3;
    auto& placed = loaded->buildingInstructions[0].steps[0]->parts[0].transformation;
    placed.m[10] = -2;
    const auto target = New<StorageScene2>();
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    EXPECT_EQ(group, Matrix4()) << "in the old scene, too";
    EXPECT_EQ(part, Matrix4::FromTranslation({1, 0, 0}));
    EXPECT_EQ(placed.m[10], -1);
    EXPECT_EQ(target->rigidSystems[0].rigids[0]->transformation, Matrix4());
    EXPECT_EQ(target->rigidSystems[0].rigids[0]->bones[0]->transformation, Matrix4::FromTranslation({1, 0, 0}));
    const auto& step = static_cast<const StorageScene2::BIStep&>(*target->buildingInstructions[0].events[0]);
    EXPECT_EQ(static_cast<const StorageScene2::BIPart&>(*step.events[0]).transformation.m[10], -1);
}

TEST(Conversion, SpreadsDecorationsOverSurfaces) {
    const ConvertedDocument document(
        Root(Group(Part(1, "",
                        "<Decoration surfaceID='3' decorationID='7'/><Decoration surfaceID='1' decorationID='8'/>"
                        "<SubMaterial surfaceID='1' materialID='5'/>") +
                   Part(2))));
    const StorageScene2::Part& part = *document->bricks[0]->parts[0];
    EXPECT_EQ(Numbers(part.decoration.begin(), part.decoration.end()), (Numbers{0, 8, 0, 7}));
    EXPECT_EQ(Numbers(part.materials.begin(), part.materials.end()), (Numbers{21, 5}));
    EXPECT_TRUE(document->bricks[1]->parts[0]->decoration.Empty());
}

TEST(Conversion, ConnectsRigidsOfTheSameModelOnly) {
    const ConvertedDocument document(
        Root("<Scene><Model><Group refID='1'/></Model><Model><Group refID='2'/><Joint name='j' type='ball'>"
             "<GroupRef groupRef='1' ax='1' ay='0' tx='4'/><GroupRef groupRef='2' zy='1' zz='0'/></Joint>"
             "<Joint><GroupRef groupRef='2'/><GroupRef groupRef='1'/></Joint></Model></Scene>"));
    ASSERT_TRUE(document.succeeded);
    const StorageScene2::RigidSystem& system = document->rigidSystems[1];
    ASSERT_EQ(system.joints.Size(), 2U);
    EXPECT_EQ(Utf8(system.joints[0].name), "j");
    EXPECT_EQ(system.joints[0].rigid1, nullptr);
    EXPECT_EQ(system.joints[0].rigid2, system.rigids[0]);
    EXPECT_EQ(system.joints[0].a1, (Vector3{1, 0, 0}));
    EXPECT_EQ(system.joints[0].t1, (Vector3{4, 0, 0}));
    EXPECT_EQ(system.joints[0].z2, (Vector3{0, 1, 0}));
    EXPECT_EQ(system.joints[0].type, 0U);
    EXPECT_EQ(system.joints[1].type, 1U);
}

TEST(Conversion, TurnsStepsIntoEvents) {
    const std::string camera = "cameraRefID='1' ";
    const std::pair<std::string, std::string> rows[] = {
        {Step("name='a'") + Step(camera + "name='b'"), "Sa()CSb()"},
        {Step("name='a'", PartRef(1) + Step(camera + "name='b'", PartRef(2)) + PartRef(2)), "Sa(CSb(P20)P10P20)"},
        {Step("name='a'", PartRef(3) + PartRef(4)) + Step("name='b'", PartRef(4) + PartRef(1)), "Sa(P30)Sb(P10)"},
        {Step("name='a'", PartRef(3) + Step("name='b'", PartRef(4))), "Sa(Sb(P30))"},
        {Step("name='a'", PartRef(1) + PartRef(1)) + Step("name='b'", PartRef(1)), "Sa(P10P10)Sb(P10)"},
    };
    for (const auto& [steps, outline] : rows) {
        SCOPED_TRACE(outline);
        const ConvertedDocument document(Root("<Cameras><Camera refID='1'/></Cameras>" +
                                              Group(Part(1, "designID='10'") + Part(2, "designID='20'") +
                                                    FlexPart(3, 0, "designID='30'") + FlexPart(4, 1)) +
                                              "<BuildingInstructions><BuildingInstruction name='bi' cameraRefID='1'>" +
                                              steps + "</BuildingInstruction><BuildingInstruction>" +
                                              Step("", PartRef(3)) + "</BuildingInstruction></BuildingInstructions>"));
        ASSERT_TRUE(document.succeeded);
        EXPECT_EQ(Utf8(document->buildingInstructions[0].name), "bi");
        EXPECT_EQ(Outline(document->buildingInstructions[0].events), outline);
        const bool placedBefore = outline.find("P30") != std::string::npos;
        EXPECT_EQ(Outline(document->buildingInstructions[1].events), placedBefore ? "S()" : "S(P30)");
        EXPECT_EQ(document.loader->placedFlexes.Size(), 1U);
    }
}

TEST(Conversion, CarriesStepsAndPlacementsOver) {
    const ConvertedDocument document(
        Root(Group(Part(1)) + Instruction(Step("exploded='' ax='1'", PartRef(1, "exploded='' tx='2'") + PartRef(1)))));
    const auto& step = static_cast<const StorageScene2::BIStep&>(*document->buildingInstructions[0].events[0]);
    EXPECT_TRUE(step.exploded);
    EXPECT_EQ(step.a, (Vector3{1, 0, 0}));
    const auto& first = static_cast<const StorageScene2::BIPart&>(*step.events[0]);
    EXPECT_TRUE(first.exploded);
    EXPECT_EQ(first.transformation, Matrix4::FromTranslation({2, 0, 0}));
    EXPECT_EQ(first.part, document->bricks[0]->parts[0]);
    EXPECT_FALSE(static_cast<const StorageScene2::BIPart&>(*step.events[1]).exploded);
}

TEST(Conversion, ExchangesCamerasAndMetadata) {
    const LoadedScene loaded(
        Root("<Meta><Brand/></Meta><Cameras><Camera refID='1'/></Cameras><Scene cameraRefID='1'/>"));
    const RefPointer<StorageScene2::Camera> camera = loaded->cameras[0];
    const auto target = New<StorageScene2>();
    target->meta.PushBack({});
    target->meta.PushBack({});
    loaded->name = "name";
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    EXPECT_EQ(target->cameras[0], camera);
    EXPECT_EQ(target->bricksCamera, camera);
    EXPECT_EQ(Utf8(target->name), "name");
    EXPECT_EQ(target->meta.Size(), 1U);
    EXPECT_EQ(loaded->meta.Size(), 2U);
    EXPECT_TRUE(loaded->cameras.Empty());
}

TEST(Conversion, StartsWithEmptyTables) {
    const ConvertedDocument document(
        Root(Group(Part(1) + FlexPart(2, 0, "assemblyRefID='1' assemblyID='2'")) + Instruction(Step("", PartRef(2)))));
    ModelLoaderWQFML4& loader = *document.loader;
    EXPECT_EQ(loader.partParts.Size(), 2U);
    EXPECT_EQ(loader.flexParts.Size(), 1U);
    EXPECT_EQ(loader.assemblyBricks.Size(), 1U);
    EXPECT_EQ(loader.placedFlexes.Size(), 1U) << "they keep their contents";
    EXPECT_TRUE(loader.Load(Bytes(Root("")), New<StorageScene2>().Get(), 0));
    EXPECT_TRUE(loader.partParts.Empty() && loader.flexParts.Empty() && loader.assemblyBricks.Empty());
    EXPECT_TRUE(loader.placedFlexes.Empty());
}

}  // namespace
}  // namespace ZEMA::testing
