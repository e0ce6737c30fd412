// Everything that can be wrong with a document, and how it is told.
#include <gtest/gtest.h>

#include "tests/loader/format4/Documents.h"

namespace ZEMA::testing {
namespace {

constexpr std::uint32_t kReadJoints = 0;

TEST(Format4Failure, GoodDocumentHasNone) {
    const LoadedScene loaded(GoodDocument(), kReadJoints);
    EXPECT_EQ(Descriptions(*loaded.loader), Words());
    EXPECT_TRUE(loaded.succeeded);
    EXPECT_EQ(loaded.loader->errorMask, 0U);
}

// One thing that is changed in the good document.
struct Fault {
    const char* what;
    const char* from;
    const char* to;
};

void ExpectErrors(const Words& errors, std::uint32_t mask, const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.what);
        const LoadedScene loaded(Broken(GoodDocument(), fault.from, fault.to), kReadJoints);
        EXPECT_FALSE(loaded.succeeded);
        EXPECT_EQ(Descriptions(*loaded.loader), errors);
        EXPECT_EQ(loaded.loader->errorMask, mask);
    }
}

TEST(Format4Failure, TellsWhatIsWrongWithTheDocument) {
    ExpectErrors({"parserError"}, 512, {{"malformed", "</Model>", "</Modell>"}});
    ExpectErrors({"versionError expected Version 4 actual Version 4.1"}, 2,
                 {{"minor version", "versionMinor='0'", "versionMinor='1'"}});
    ExpectErrors({"versionError expected Version 4 actual Version 0"}, 2, {{"no version", "versionMajor='4'", ""}});
    ExpectErrors({"cameraError error detail nonExistingCamera"}, 8,
                 {{"the scene's camera", "Scene cameraRefID='1'", "Scene cameraRefID='9'"}});
    ExpectErrors({"cameraError error detail missingRefID"}, 8,
                 {{"a camera without refID", "</Cameras>", "<Camera/></Cameras>"},
                  {"one with a negative refID", "</Cameras>", "<Camera refID='-1'/></Cameras>"}});
    ExpectErrors({"biError error detail nonExistingCamera"}, 256,
                 {{"an instruction's camera", "Instruction cameraRefID='1'", "Instruction cameraRefID='9'"},
                  {"a step's camera", "Step cameraRefID='2'", "Step cameraRefID='9'"}});
    ExpectErrors({"biError error detail nonExistingPart"}, 256,
                 {{"a step's part", "partRefID='1'", "partRefID='9'"}, {"or none", "partRefID='1'", ""}});
}

TEST(Format4Failure, TellsWhatIsWrongWithAPart) {
    ExpectErrors({"partError error detail missingRefID"}, 32,
                 {{"no refID", "Part refID='2'", "Part"},
                  {"the first check counts", "Part refID='2'", "Part flexRefID='1' assemblyID='1'"}});
    ExpectErrors({"partError error detail notOneMaterial"}, 32, {{"no material", "'3004' materialID='21'", "'3004'"}});
    ExpectErrors({"partError error detail assembly"}, 32,
                 {{"no ID", "refID='2' designID", "refID='2' assemblyRefID='1' designID"},
                  {"ID 0", "refID='2' designID", "refID='2' assemblyRefID='1' assemblyID='0' designID"},
                  {"no refID", "refID='2' designID", "refID='2' assemblyID='1' designID"}});
    ExpectErrors({"partError error detail flex"}, 32,
                 {{"no control point", "refID='2' designID", "refID='2' flexRefID='1' designID"},
                  {"no refID", "refID='2' designID", "refID='2' controlPoint='0' designID"}});
}

TEST(Format4Failure, TellsWhatIsWrongWithAJoint) {
    ExpectErrors({"jointError"}, 4,
                 {{"three ends", "</Joint>", "<GroupRef groupRef='1'/></Joint>"},
                  {"one end", "<GroupRef groupRef='2'/>", ""},
                  {"one group", "groupRef='2'", "groupRef='1'"},
                  {"a is too long", "az='1'", "az='1.00002'"},
                  {"a is no number", "az='1'", "az='nan'"},
                  {"z is too long", "groupRef='2'", "groupRef='2' zx='1'"}});
    ExpectErrors({"jointError", "jointError"}, 4,
                 {{"no such group, so one end", "groupRef='2'", "groupRef='9'"},
                  {"what follows is not read", "groupRef='2'", "groupRef='9' zx='1'"}});
    ExpectErrors({"jointError", "jointError", "jointError"}, 4,
                 {{"what stands before is checked", "groupRef='2'", "zx='1' groupRef='9'"}});
}

TEST(Format4Failure, NeedsARootOfItsName) {
    for (const char* text : {"<wqfml versionMajor='4'/>", "<a><WQFML versionMajor='4'/></a>"}) {
        SCOPED_TRACE(text);
        const LoadedScene loaded(text);
        EXPECT_FALSE(loaded.succeeded);
        EXPECT_EQ(Descriptions(*loaded.loader), Words{"unknown error detail missingWQFMLTag"});
        EXPECT_EQ(loaded.loader->errorMask, 1024U);
    }
}

TEST(Format4Failure, FindsEverythingInOneLoad) {
    std::string text = Broken(GoodDocument(), "Scene cameraRefID='1'", "Scene cameraRefID='9'");
    text = Broken(text, "<Part refID='2'", "<Part");
    text = Broken(text, "partRefID='1'", "partRefID='9'");
    const LoadedScene loaded(text, kReadJoints);
    EXPECT_EQ(Descriptions(*loaded.loader),
              (Words{"cameraError error detail nonExistingCamera", "partError error detail missingRefID",
                     "biError error detail nonExistingPart"}));
    EXPECT_EQ(loaded.loader->errorMask, 8U | 32U | 256U);
    const LoadedScene malformed(Broken(text, "</WQFML>", ""), kReadJoints);
    EXPECT_EQ(Descriptions(*malformed.loader).size(), 4U) << "the parser's comes after them";
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

TEST(Format4Failure, DroppedPartsAreInNoGroup) {
    const LoadedScene loaded(
        Root(Group(Part(1, "flexRefID='7'", "<SubMaterial surfaceID='1' materialID='2'/>") + Part(2))));
    ASSERT_EQ(loaded.Group(0).parts.Size(), 1U);
    EXPECT_EQ(loaded.Part(0).materials.Size(), 1U) << "what was in the dropped part is nobody's";
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

TEST(Format4Failure, NextLoadStartsAfresh) {
    const LoadedScene loaded(Broken(GoodDocument(), "<Part refID='2'", "<Part"));
    EXPECT_TRUE(loaded.loader->LoadScene(Bytes(Root("")), loaded.scene.Get(), 0));
    EXPECT_TRUE(loaded.loader->errors.Empty());
    EXPECT_EQ(loaded.loader->errorMask, 0U);
    EXPECT_TRUE(loaded->models.Empty());
    const ConvertedDocument converted(Broken(GoodDocument(), "<Part refID='2'", "<Part"));
    EXPECT_TRUE(converted->meta.Empty() && converted->rigidSystems.Empty()) << "a failed load converts nothing";
}

}  // namespace
}  // namespace ZEMA::testing
