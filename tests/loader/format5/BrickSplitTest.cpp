// Designs that documents name and the catalogue changes, as they come out of a load.
#include <gtest/gtest.h>

#include <algorithm>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

namespace ZEMA::testing {
namespace {

const DesignSplit& kDesigns = CombinedDesign();

std::string Part(std::size_t refID, std::uint32_t design) {
    const std::string number = std::to_string(refID);
    return "<Part refID='" + number + "' designID='" + std::to_string(design) + "' materials='1'><Bone refID='" +
           number + "' t='1,2,3'/></Part>";
}

std::string Brick(std::size_t refID, std::uint32_t design, const std::string& content) {
    return "<Brick refID='" + std::to_string(refID) + "' designID='" + std::to_string(design) + "' itemNos='7'>" +
           content + "</Brick>";
}

// The retired design whose successor `accepts`.
template <class Accepts>
DesignSubstitution Retired(Accepts accepts) {
    return *std::ranges::find_if(DesignSubstitutions(), [&](const auto& row) { return accepts(row.newDesign); });
}

TEST(Substitution, HappensOnceAndComesBeforeTheCorrections) {
    const auto twice = Retired([](std::uint32_t design) { return SubstituteDesign(design) != design; });
    const auto moved = Retired([](std::uint32_t design) { return FindSecondCorrection(design) != nullptr; });
    const DesignCorrection& correction = *FindSecondCorrection(moved.newDesign);
    const LoadedDocument document(
        Wqfml("<Meta><BrickSet version='100'/></Meta>" +
              Bricks(Brick(1, twice.oldDesign, Part(1, twice.oldDesign) + Part(2, moved.oldDesign)))));
    ASSERT_TRUE(document.succeeded);
    EXPECT_EQ(document.scene->bricks[0]->designID, twice.newDesign);
    EXPECT_EQ(document.Part(0).designID, twice.newDesign);
    EXPECT_EQ(document.Part(0, 1).bones[0]->transformation.Translation(),
              (Vector3{1, 2 + correction.y, 3 + correction.z}));
}

TEST(BrickSplit, PutsTwoBricksInThePlaceOfOne) {
    const auto retired = Retired([](std::uint32_t design) { return design == kDesigns.combined; });
    const std::string content = "<Behavior BehaviorName='b'/>" + Part(1, kDesigns.second) + Part(2, kDesigns.first) +
                                Part(3, 5) + Part(4, kDesigns.second);
    const LoadedDocument document(
        Wqfml(Bricks(Brick(1, 8, Part(9, 8)) + Brick(2, retired.oldDesign, content) + Brick(2, 9, Part(10, 9)))));
    ASSERT_TRUE(document.succeeded) << "the combined brick's refID is free again";
    const auto& bricks = document.scene->bricks;
    ASSERT_EQ(bricks.Size(), 4U);
    EXPECT_EQ(bricks[0]->designID, 8U);
    EXPECT_EQ(bricks[1]->designID, kDesigns.first);
    EXPECT_EQ(bricks[2]->designID, kDesigns.second);
    EXPECT_EQ(document.loader->Bricks().Find(2)->second, bricks[3].Get());
    ASSERT_EQ(bricks[1]->parts.Size(), 1U);
    ASSERT_EQ(bricks[2]->parts.Size(), 2U);
    EXPECT_EQ(bricks[2]->parts[1].Get(), document.loader->Parts().Find(4)->second);
    for (const std::size_t index : {1U, 2U}) {
        EXPECT_TRUE(bricks[index]->itemNos.IsEmpty());
        EXPECT_EQ(Utf8(bricks[index]->behaviors[0].name), "b");
        for (const auto& part : bricks[index]->parts) EXPECT_EQ(part->brick, bricks[index].Get());
    }
}

// Part 3 belongs to neither half.
TEST(BrickSplit, LeavesDroppedPartsWithinReachOfReferences) {
    LoadedDocument document(
        Wqfml(Bricks(Brick(1, kDesigns.combined, Part(3, 5) + Part(4, 6))) +
              "<GroupSystems><GroupSystem><Group partRefs='3'/></GroupSystem></GroupSystems>"
              "<RigidSystems><RigidSystem><Rigid refID='1' boneRefs='3,4'/></RigidSystem></RigidSystems>"
              "<BuildingInstructions><BuildingInstruction><Step><PartRef partRef='3'/></Step></BuildingInstruction>"
              "</BuildingInstructions>"));
    ASSERT_TRUE(document.succeeded);
    document.loader.Reset();
    const auto& part = document.scene->groupSystems[0].groups[0]->parts[0];
    EXPECT_EQ(part->designID, 5U);
    EXPECT_EQ(part->brick, nullptr);
    const auto& step = static_cast<StorageScene2::BIStep&>(*document.scene->buildingInstructions[0].events[0]);
    EXPECT_EQ(static_cast<StorageScene2::BIPart&>(*step.events[0]).part, part);
    for (const auto& bone : document.scene->rigidSystems[0].rigids[0]->bones) {
        EXPECT_EQ(bone->transformation.Translation(), (Vector3{1, 2, 3}));
        EXPECT_EQ(bone->part, nullptr) << "part 4 is gone";
    }
}

}  // namespace
}  // namespace ZEMA::testing
