// What becomes of a format-4 scene, beyond what is compared for random models in both formats.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

std::string FlexPart(int refID, int controlPoint, const std::string& attributes = "") {
    return Part(refID, "flexRefID='1' controlPoint='" + std::to_string(controlPoint) + "' " + attributes);
}

const StorageScene2::BIStep& StepOf(const StorageScene2::BI& instruction) {
    return static_cast<const StorageScene2::BIStep&>(*instruction.events[0]);
}

const StorageScene2::BIPart& PlacedIn(const StorageScene2::BIStep& step) {
    return static_cast<const StorageScene2::BIPart&>(*step.events[0]);
}

TEST(Conversion, FirstPartGivesABrickItsNumbers) {
    const std::string assembly = "assemblyRefID='1' assemblyID='99' ";
    const ConvertedDocument document(
        Root(Group(Part(1, assembly + "designID='1' itemNos='a'") + FlexPart(3, 1, "designID='5' itemNos='c'") +
                   Part(2, "assemblyRefID='1' assemblyID='98' designID='2' itemNos='b'") +
                   FlexPart(4, 0, "designID='6' itemNos='d'"))));
    const auto& bricks = document->bricks;
    ASSERT_EQ(bricks.Size(), 2U);
    EXPECT_EQ(bricks[0]->designID, 99U);
    EXPECT_EQ(Utf8(bricks[0]->itemNos), "a");
    EXPECT_EQ(bricks[0]->parts[1]->designID, 2U);
    EXPECT_EQ(bricks[1]->designID, 5U);
    EXPECT_EQ(Utf8(bricks[1]->itemNos), "c");
    EXPECT_EQ(bricks[1]->parts[0]->designID, 5U);
    for (const auto& brick : bricks) {
        for (const auto& part : brick->parts) {
            EXPECT_EQ(part->brick, brick.Get());
            for (const auto& bone : part->bones) EXPECT_EQ(bone->part, part.Get());
        }
    }
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

TEST(Conversion, SanitisesPlacements) {
    const LoadedScene loaded(Root(Group(Part(1, "tx='1'")) + Instruction(Step("", PartRef(1, "exploded=''")))));
    auto& group = loaded.Group(0).transformation;
    group.m[0] = 0;
    auto& part = loaded.Part(0).transformation;
    part.m[5] = 3;
    loaded->buildingInstructions[0].steps[0]->parts[0].transformation.m[10] = -2;
    const auto target = New<StorageScene2>();
    loaded.loader->Convert(loaded.scene.Get(), target.Get());
    EXPECT_EQ(group, Matrix4()) << "in the old scene, too";
    EXPECT_EQ(part, Matrix4::FromTranslation({1, 0, 0}));
    const StorageScene2::Rigid& rigid = *target->rigidSystems[0].rigids[0];
    EXPECT_EQ(rigid.transformation, Matrix4());
    EXPECT_EQ(rigid.bones[0]->transformation, Matrix4::FromTranslation({1, 0, 0}));
    EXPECT_EQ(PlacedIn(StepOf(target->buildingInstructions[0])).transformation.m[10], -1);
}

TEST(Conversion, ConnectsRigidsOfTheSameModelOnly) {
    const ConvertedDocument document(
        Root("<Scene><Model><Group refID='1'/></Model><Model><Group refID='2'/>"
             "<Joint name='j'><GroupRef groupRef='1' tx='4'/><GroupRef groupRef='2'/></Joint></Model></Scene>"));
    ASSERT_TRUE(document.succeeded);
    const StorageScene2::RigidSystem& system = document->rigidSystems[1];
    ASSERT_EQ(system.joints.Size(), 1U);
    EXPECT_EQ(Utf8(system.joints[0].name), "j");
    EXPECT_EQ(system.joints[0].rigid1, nullptr);
    EXPECT_EQ(system.joints[0].t1, (Vector3{4, 0, 0}));
    EXPECT_EQ(system.joints[0].rigid2, system.rigids[0]);
}

TEST(Conversion, PlacesAFlexOnceInAllInstructions) {
    const ConvertedDocument document(
        Root("<Cameras><Camera refID='1'/></Cameras>" + Group(Part(1) + FlexPart(2, 0) + FlexPart(3, 1)) +
             "<BuildingInstructions><BuildingInstruction name='bi' cameraRefID='1'>" + Step("", PartRef(3)) +
             "</BuildingInstruction><BuildingInstruction>" + Step("", PartRef(2) + PartRef(1)) +
             "</BuildingInstruction></BuildingInstructions>"));
    ASSERT_TRUE(document.succeeded);
    EXPECT_EQ(Utf8(document->buildingInstructions[0].name), "bi");
    ASSERT_EQ(document->buildingInstructions[0].events.Size(), 1U) << "its own camera is no event";
    EXPECT_EQ(PlacedIn(StepOf(document->buildingInstructions[0])).part, document->bricks[1]->parts[0]);
    const StorageScene2::BIStep& second = StepOf(document->buildingInstructions[1]);
    ASSERT_EQ(second.events.Size(), 1U);
    EXPECT_EQ(PlacedIn(second).part, document->bricks[0]->parts[0]);
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

TEST(Conversion, StartsWithEmptyTables) {
    const ConvertedDocument document(
        Root(Group(Part(1) + FlexPart(2, 0, "assemblyRefID='1' assemblyID='2'")) + Instruction(Step("", PartRef(2)))));
    ModelLoaderWQFML4& loader = *document.loader;
    EXPECT_EQ(loader.partParts.Size(), 2U);
    EXPECT_EQ(loader.placedFlexes.Size(), 1U) << "they keep their contents";
    EXPECT_TRUE(loader.Load(Bytes(Root("")), New<StorageScene2>().Get(), 0));
    EXPECT_TRUE(loader.partParts.Empty() && loader.flexParts.Empty() && loader.assemblyBricks.Empty());
    EXPECT_TRUE(loader.placedFlexes.Empty());
}

}  // namespace
}  // namespace ZEMA::testing
