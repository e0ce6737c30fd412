// What format 5 makes of a document, with the designs that the catalogue changes and the documents that are made to
// exhaust a reader.
#include "loader/format5/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "loader/DesignCatalogue.h"
#include "tests/loader/DocumentCases.h"

namespace ZEMA::testing {
namespace {

std::string Wqfml(const std::string& sections) {
    return "<WQFML versionMajor='5'>" + sections + "</WQFML>";
}

std::string Bricks(const std::string& bricks) {
    return "<Bricks>" + bricks + "</Bricks>";
}

// One brick of one part, part 1, of one bone, bone 1.
std::string BrickWithBone() {
    return "<Brick refID='1' designID='1'><Part refID='1' designID='2' materials='3'><Bone refID='1'/></Part></Brick>";
}

struct LoadedDocument {
    explicit LoadedDocument(const std::string& text, const RefPointer<DesignTemplates>& templates = nullptr)
        : loader(New<ModelLoaderWQFML5>(templates)), scene(New<StorageScene2>()) {
        succeeded = loader->Load(Bytes(text), scene.Get(), 1);
    }

    Words Errors() const { return Descriptions(*loader); }
    std::string At(const std::string& place = "") const { return SceneText(*scene, place); }
    StorageScene2::Part& Part(std::size_t brick, std::size_t part = 0) const {
        return *scene->bricks[brick]->parts[part];
    }

    RefPointer<ModelLoaderWQFML5> loader;
    RefPointer<StorageScene2> scene;
    bool succeeded = false;
};

TEST(ModelLoaderWQFML5, MakesOfDocumentsWhatTheyAreCasesOf) {
    for (const char* subject : {"document", "bricks", "incomplete", "systems", "values"}) {
        SCOPED_TRACE(subject);
        ExpectCases<ModelLoaderWQFML5>(std::string(ZEMA_CASES "/") + subject + ".cases");
    }
}

TEST(ModelLoaderWQFML5, LinksWhatItReads) {
    const LoadedDocument document(
        Wqfml("<Meta><BrickSet version='68.1'/><brickset version='3'/></Meta>"
              "<Cameras><Camera refID='1'/></Cameras><Bricks cameraRef='1'>" +
              BrickWithBone() + "<Brick/></Bricks>"));
    EXPECT_EQ(document.loader->errorMask, 16U);
    EXPECT_EQ(document.loader->BrickSetVersion(), Version(68, 1));
    EXPECT_EQ(document.scene->bricksCamera, document.scene->cameras[0]);
    EXPECT_EQ(document.Part(0).brick, document.scene->bricks[0].Get());
    EXPECT_EQ(document.Part(0).bones[0]->part, &document.Part(0));
}

TEST(ModelLoaderWQFML5, ClearsAllButBehaviorsAndTheBrickSetForTheNextLoad) {
    const std::string split = std::to_string(CombinedDesign().combined);
    LoadedDocument document(
        "<WQFML versionMajor='5' name='n'><Meta><BrickSet version='3.4'/></Meta><Behaviors><Behavior BehaviorName='b'/>"
        "</Behaviors><Cameras><Camera/><Camera refID='1'/></Cameras><Bricks cameraRef='1'>" +
        BrickWithBone() + "<Brick refID='2' designID='" + split + "'><Part refID='2' designID='1' materials='1'/>" +
        "</Brick></Bricks><GroupSystems><GroupSystem/></GroupSystems><RigidSystems><RigidSystem><Rigid refID='1'/>"
        "</RigidSystem></RigidSystems><BuildingInstructions><BuildingInstruction/></BuildingInstructions></WQFML>");
    const auto& [loader, scene, succeeded] = document;
    EXPECT_EQ(document.Errors(), Words{"cameraError error detail missingRefID"});
    const RefPointer<StorageScene2::Part> dropped(loader->Parts().Find(2)->second);
    EXPECT_EQ(dropped->ReferenceCount(), 2) << "held for references to it";

    EXPECT_FALSE(loader->Load("<x/>", scene.Get(), 1));
    EXPECT_EQ(document.Errors(), Words{"unknown error detail missingWQFMLTag"});
    EXPECT_EQ(loader->errorMask, 1024U);
    EXPECT_EQ(dropped->ReferenceCount(), 1);
    EXPECT_TRUE(loader->Cameras().Empty() && loader->Bricks().Empty() && loader->Parts().Empty());
    EXPECT_TRUE(loader->Bones().Empty() && loader->Rigids().Empty());
    EXPECT_EQ(document.At(), R"({"behaviors":[{"name":"b"}]})") << "the scene's behaviours stay";

    EXPECT_TRUE(loader->Load(Bytes(Wqfml("<Meta><BrickSet version='7'/></Meta>" + Bricks(""))), scene.Get(), 1));
    EXPECT_EQ(loader->BrickSetVersion(), Version(7, 4)) << "components that are not given stay";
}

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

// Each of `count` bricks with `#` in the text replaced by its number.
std::string Numbered(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 1; i <= count; ++i) {
        for (const char c : text) c == '#' ? result += std::to_string(i) : result += c;
    }
    return result;
}

TEST(HostileDocument, HasManyBricks) {
    const std::string part = "<Part refID='#' designID='#' materials='#'><Bone refID='#'/></Part>";
    const LoadedDocument designs(Wqfml(Bricks(Numbered("<Brick refID='#' designID='#'>" + part + "</Brick>", 200000))));
    EXPECT_EQ(designs.loader->Bones().Size(), 200000U);
    const std::string brick = "<Brick refID='#' designID='" + std::to_string(CombinedDesign().combined) + "'/>";
    EXPECT_EQ(LoadedDocument(Wqfml(Bricks(Numbered(brick, 100000)))).scene->bricks.Size(), 200000U);
}

TEST(HostileDocument, NestsGroupsAndSteps) {
    const auto nested = [](const std::string& name) {
        return Repeated("<" + name + ">", 200000) + Repeated("</" + name + ">", 200000);
    };
    const LoadedDocument document(Wqfml(Bricks("") + "<GroupSystems><GroupSystem>" + nested("Group") +
                                        "</GroupSystem></GroupSystems>" +
                                        "<BuildingInstructions><BuildingInstruction>" + nested("Step") +
                                        "</BuildingInstruction></BuildingInstructions>"));
    EXPECT_TRUE(document.succeeded);
}

TEST(HostileDocument, HasLongLists) {
    const LoadedDocument document(Wqfml(
        Bricks("<Brick refID='1' designID='1'><Part refID='1' designID='1' materials='" + Repeated(",", 1000000) +
               "'/></Brick>") +
        "<GroupSystems><GroupSystem><Group partRefs='" + Repeated("1,", 1000000) + "'/></GroupSystem></GroupSystems>"));
    EXPECT_EQ(document.Part(0).materials.Size(), 1000000U);
    EXPECT_EQ(document.scene->groupSystems[0].groups[0]->parts.Size(), 1000000U);
}

}  // namespace
}  // namespace ZEMA::testing
