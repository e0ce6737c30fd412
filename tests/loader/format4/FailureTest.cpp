// What can be wrong with a document beyond the plain case of each error, which the tests of `wqf check` show.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

TEST(Format4Failure, IsFoundByStrictChecks) {
    const char* const flex = "partError error detail flex";
    const char* const assembly = "partError error detail assembly";
    const char* const joint = "jointError";
    const char* const camera = "biError error detail nonExistingCamera";
    const struct {
        const char* what;
        const char* from;  // in a good document
        const char* to;
        Words errors;
        std::uint32_t options = 0;
    } rows[] = {
        {"nothing is wrong", "refID", "refID", {}},
        {"no version", "versionMajor='4'", "", {"versionError expected Version 4 actual Version 0"}},
        {"a minor version", "nor='0'", "nor='1'", {"versionError expected Version 4 actual Version 4.1"}},
        {"a negative refID",
         "Camera refID='2'",
         "Camera refID='-1'",
         {"cameraError error detail missingRefID", camera}},
        {"the first check counts", "Part refID='2'", "Part flexRefID='1'", {"partError error detail missingRefID"}},
        {"no material, and halves of other things",
         "'3004' materialID='21'",
         "'3004' assemblyID='1' flexRefID='1'",
         {"partError error detail notOneMaterial"}},
        {"no assembly of ID 0", "'3004'", "'3004' assemblyRefID='1' assemblyID='0'", {assembly}},
        {"an assembly without refID", "'3004'", "'3004' assemblyID='1' flexRefID='1'", {assembly}},
        {"a control point without flex", "'3004'", "'3004' controlPoint='0'", {flex}},
        {"one end", "<GroupRef groupRef='2'/>", "", {joint}},
        {"three ends", "<GroupRef groupRef='2'/>", "<GroupRef groupRef='2'/><GroupRef groupRef='3'/>", {joint}},
        {"a is too long", "az='1'", "az='1.00002'", {joint}},
        {"a is too short", "az='1'", "az='0.99998'", {joint}},
        {"a is as long as it may be", "az='1'", "az='1.000009'", {}},
        {"a is as short as it may be", "az='1'", "az='0.999991'", {}},
        {"a is no number", "az='1'", "az='nan'", {joint}},
        {"z is too long", "groupRef='2'", "groupRef='2' zx='1'", {joint}},
        {"what stands behind no group is not read", "groupRef='2'", "groupRef='9' zx='1'", {joint, joint}},
        {"what stands before is checked", "groupRef='2'", "zx='1' groupRef='9'", {joint, joint, joint}},
        {"one group twice", "groupRef='2'", "groupRef='1'", {joint}, 2},
        {"joints are skipped", "groupRef='2'", "groupRef='1'", {}, 1},
        {"an instruction's unknown camera",
         "Instruction x='' cameraRefID='1'",
         "Instruction x='' cameraRefID='9'",
         {camera}},
        {"a step's unknown camera", "cameraRefID='2'", "cameraRefID='9'", {camera}, 1},
        {"cameras may be unknown", "Instruction x='' cameraRefID='1'", "Instruction cameraRefID='9'", {}, 2},
        {"those of steps, too", "cameraRefID='2'", "cameraRefID='9'", {}, 3},
        {"but not the scene's",
         "Scene x='' cameraRefID='1'",
         "Scene x='' cameraRefID='9'",
         {"cameraError error detail nonExistingCamera"},
         3},
        {"nor a part", "partRefID='1'", "partRefID='9'", {"biError error detail nonExistingPart"}, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene loaded(Broken(GoodDocument(), row.from, row.to), row.options);
        EXPECT_EQ(Descriptions(*loaded.loader), row.errors);
        EXPECT_EQ(loaded.succeeded, row.errors.empty());
    }
    EXPECT_TRUE(LoadedScene(GoodDocument(), 1)->models[0].joints.Empty());
    const LoadedScene inside("<a>" + GoodDocument() + "</a>");
    EXPECT_FALSE(inside.succeeded);
    EXPECT_EQ(Descriptions(*inside.loader), Words{"unknown error detail missingWQFMLTag"});
}

TEST(Format4Failure, DoesNotEndTheLoadOrTheNext) {
    std::string text = Broken(GoodDocument(), "Scene x='' cameraRefID='1'", "Scene cameraRefID='9'");
    text = Broken(text, "<Part refID='2' designID='3004' materialID='21'/>",
                  "<Part><SubMaterial surfaceID='1' materialID='2'/></Part>");
    text = Broken(text, "partRefID='1'", "partRefID='9'");
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

TEST(Format4Failure, IncompleteFlexesRaiseNothing) {
    // The attributes of part 2; part 1 is point 0 of flexible element 7, part 3 point 1.
    const std::pair<const char*, bool> rows[] = {
        {"flexRefID='7' controlPoint='2'", true},
        {"flexRefID='7' controlPoint='3'", false},
        {"flexRefID='7' controlPoint='2' assemblyRefID='1' assemblyID='5'", false},
        {"flexRefID='7' controlPoint='0' assemblyRefID='1' assemblyID='5'", true},  // replaced by part 1
        {"flexRefID='8' controlPoint='1'", false},
    };
    for (const auto& [second, succeeds] : rows) {
        SCOPED_TRACE(second);
        const LoadedScene loaded(Root(Group(Part(2, second) + Part(1, "flexRefID='7' controlPoint='0'") +
                                            Part(3, "flexRefID='7' controlPoint='1'"))));
        EXPECT_EQ(loaded.succeeded, succeeds);
        EXPECT_TRUE(loaded.loader->errors.Empty());
    }
}

}  // namespace
}  // namespace ZEMA::testing
