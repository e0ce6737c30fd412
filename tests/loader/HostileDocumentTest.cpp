// Documents made to be too deep, too large or too wrong.
#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

namespace ZEMA::testing {
namespace {

constexpr std::size_t kDepth = 200000;

// Elements one inside another, the innermost with `content`.
std::string Nested(const std::string& start, const std::string& content, const std::string& end) {
    return Repeated(start, kDepth) + content + Repeated(end, kDepth);
}

// Each of `count` bricks with `#` in the text replaced by its number.
std::string Numbered(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 1; i <= count; ++i) {
        for (const char c : text) c == '#' ? result += std::to_string(i) : result += c;
    }
    return result;
}

TEST(HostileDocument, NestsGroupsDeeply) {
    const LoadedDocument document(
        Wqfml(Bricks("") + "<GroupSystems><GroupSystem>" +
              Nested("<Group name='g'>", "<Group partRefs='1'/>", "<Behavior BehaviorName='b'/></Group>") +
              "</GroupSystem></GroupSystems>"));
    EXPECT_FALSE(document.succeeded) << "the innermost names an unknown part";
    EXPECT_EQ(document.Errors(), Words());
    std::size_t depth = 0;
    const auto* groups = &document.scene->groupSystems[0].groups;
    for (; (*groups)[0]->behaviors.Size() == 1; groups = &(*groups)[0]->groups) ++depth;
    EXPECT_EQ(depth, kDepth);
    EXPECT_EQ((*groups)[0]->parts.Size(), 1U);
}

TEST(HostileDocument, NestsStepsDeeply) {
    const LoadedDocument document(Wqfml(Bricks("") + "<BuildingInstructions><BuildingInstruction>" +
                                        Nested("<Step>", "<PartRef partRef='1'/>", "<Camera cameraRef='1'/></Step>") +
                                        "</BuildingInstruction></BuildingInstructions>"));
    ASSERT_EQ(document.loader->errors.Size(), kDepth + 1);
    EXPECT_EQ(document.loader->errorMask, 256U);
}

TEST(HostileDocument, HasManyBricksOfAsManyDesigns) {
    const LoadedDocument document(Wqfml(Bricks(Numbered(
        "<Brick refID='#' designID='#'><Part refID='#' designID='#' materials='#'><Bone refID='#'/></Part></Brick>",
        200000))));
    EXPECT_EQ(document.loader->Bones().Size(), 200000U);
    EXPECT_GE(document.scene->bricks.Size(), 200000U);
}

TEST(HostileDocument, HasManyCombinedBricks) {
    const std::string brick = "<Brick refID='#' designID='" + std::to_string(CombinedDesign().combined) + "'/>";
    const LoadedDocument document(Wqfml(Bricks(Numbered(brick, 100000))));
    EXPECT_EQ(document.scene->bricks.Size(), 200000U);
    EXPECT_TRUE(document.loader->Bricks().Empty());
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
