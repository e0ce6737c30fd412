// Documents made to exhaust the stack, or the patience of whoever reads a list anew for each of its entries.
#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

namespace ZEMA::testing {
namespace {

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
