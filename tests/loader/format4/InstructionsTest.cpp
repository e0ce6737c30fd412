#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

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

TEST(Format4Instructions, NestsSteps) {
    const std::string steps =
        Step("name='a'", Step("name='b'") + "<Other>" + Step("name='x'") + "</Other>" + "<PartRef partRefID='1'>" +
                             Step("name='c'", Step("name='d'")) + "</PartRef>") +
        "<Other/>" + Step("name='e'");
    const LoadedScene loaded(Root(Group(Part(1)) + Instruction(steps) + Instruction("")));
    EXPECT_TRUE(loaded.succeeded);
    ASSERT_EQ(loaded->buildingInstructions.Size(), 2U);
    EXPECT_EQ(Utf8(loaded->buildingInstructions[0].name), "bi");
    EXPECT_EQ(Outline(loaded->buildingInstructions[0].steps), "a(bc(d))e") << "a step in a part reference counts";
}

TEST(Format4Instructions, ReadsSteps) {
    const LoadedScene loaded(
        Root("<Cameras><Camera refID='3'/></Cameras><BuildingInstructions>"
             "<BuildingInstruction cameraRefID='3'><Step name='\xC3\xA4' cameraRefID='3'"
             " exploded='false' ax='1' ay='2' az='3'/><Step/></BuildingInstruction>"
             "</BuildingInstructions>"));
    const StorageScene::BI& instruction = loaded->buildingInstructions[0];
    EXPECT_EQ(instruction.camera, loaded->cameras[0]);
    const StorageScene::BIStep& step = *instruction.steps[0];
    EXPECT_EQ(Utf8(step.name), "\xC3\xA4");
    EXPECT_EQ(step.camera, loaded->cameras[0]);
    EXPECT_TRUE(step.exploded) << "whatever it says";
    EXPECT_EQ(step.a, (Vector3{1, 2, 3}));
    EXPECT_FALSE(instruction.steps[1]->exploded || instruction.steps[1]->camera);
    EXPECT_EQ(instruction.steps[1]->a, Vector3());
}

}  // namespace
}  // namespace ZEMA::testing
