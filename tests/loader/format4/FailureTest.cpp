// What can be wrong with a document beyond the plain case of each error, which the tests of `wqf check` show.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

TEST(Format4Failure, IsFoundByStrictChecks) {
    const char* const flex = "partError error detail flex";
    const char* const assembly = "partError error detail assembly";
    const char* const joint = "jointError";
    const struct {
        const char* what;
        const char* from;  // in a good document
        const char* to;
        Words errors;
    } rows[] = {
        {"nothing", "refID", "refID", {}},
        {"no version", "versionMajor='4'", "", {"versionError expected Version 4 actual Version 0"}},
        {"a negative refID",
         "Camera refID='2'",
         "Camera refID='-1'",
         {"cameraError error detail missingRefID", "biError error detail nonExistingCamera"}},
        {"the first check counts", "Part refID='2'", "Part flexRefID='1'", {"partError error detail missingRefID"}},
        {"no assembly of ID 0", "'3004'", "'3004' assemblyRefID='1' assemblyID='0'", {assembly}},
        {"an assembly without refID", "'3004'", "'3004' assemblyID='1'", {assembly}},
        {"a control point without flex", "'3004'", "'3004' controlPoint='0'", {flex}},
        {"one end", "<GroupRef groupRef='2'/>", "", {joint}},
        {"a is too long", "az='1'", "az='1.00002'", {joint}},
        {"a is no number", "az='1'", "az='nan'", {joint}},
        {"z is too long", "groupRef='2'", "groupRef='2' zx='1'", {joint}},
        {"what stands behind no group is not read", "groupRef='2'", "groupRef='9' zx='1'", {joint, joint}},
        {"what stands before is checked", "groupRef='2'", "zx='1' groupRef='9'", {joint, joint, joint}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene loaded(Broken(GoodDocument(), row.from, row.to));
        EXPECT_EQ(Descriptions(*loaded.loader), row.errors);
        EXPECT_EQ(loaded.succeeded, row.errors.empty());
    }
}

TEST(Format4Failure, NeedsARootOfItsName) {
    for (const char* text : {"<wqfml versionMajor='4'/>", "<a><WQFML versionMajor='4'/></a>"}) {
        SCOPED_TRACE(text);
        const LoadedScene loaded(text);
        EXPECT_FALSE(loaded.succeeded);
        EXPECT_EQ(Descriptions(*loaded.loader), Words{"unknown error detail missingWQFMLTag"});
    }
}

TEST(Format4Failure, DoesNotEndTheLoadOrTheNext) {
    std::string text = Broken(GoodDocument(), "Scene cameraRefID='1'", "Scene cameraRefID='9'");
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

TEST(Format4Failure, OptionsLeaveChecksOut) {
    const struct {
        const char* from;
        const char* to;
        std::uint32_t options;
        bool succeeds;
    } rows[] = {
        {"groupRef='2'", "groupRef='1'", 1, true},
        {"groupRef='2'", "groupRef='1'", 2, false},
        {"Instruction cameraRefID='1'", "Instruction cameraRefID='9'", 2, true},
        {"Step cameraRefID='2'", "Step cameraRefID='9'", 3, true},
        {"Scene cameraRefID='1'", "Scene cameraRefID='9'", 3, false},
        {"partRefID='1'", "partRefID='9'", 3, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.to);
        EXPECT_EQ(LoadedScene(Broken(GoodDocument(), row.from, row.to), row.options).succeeded, row.succeeds);
    }
    EXPECT_TRUE(LoadedScene(GoodDocument(), 1)->models[0].joints.Empty());
}

}  // namespace
}  // namespace ZEMA::testing
