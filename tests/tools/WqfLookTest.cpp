// wqf check, scene and catalogue as processes.

#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

using Json = nlohmann::ordered_json;

std::string In(int format, const std::string& content, const std::string& minor = "0") {
    return "<WQFML versionMajor='" + std::to_string(format) + "' versionMinor='" + minor + "'>" + content + "</WQFML>";
}

std::string Part4(const std::string& attributes) {
    return In(4, "<Scene><Model><Group><Part " + attributes + "/></Group></Model></Scene>");
}

std::string Joint4(const std::string& ends) {
    return In(4, "<Scene><Model><Group refID='1'/><Group refID='2'/><Joint>" + ends + "</Joint></Model></Scene>");
}

std::string Steps4(const std::string& content) {
    return In(4, "<BuildingInstructions>" + content + "</BuildingInstructions>");
}

std::string Bricks5(const std::string& content) {
    return In(5, "<Bricks>" + content + "</Bricks>");
}

// The content of a brick's only part, whose start tag ends with these attributes.
std::string Part5(const std::string& attributes, const std::string& content = "") {
    return Bricks5("<Brick refID='1' designID='1'><Part designID='1' " + attributes + ">" + content +
                   "</Part></Brick>");
}

std::string Rigids5(const std::string& content) {
    return In(5, "<Bricks/><RigidSystems><RigidSystem>" + content + "</RigidSystem></RigidSystems>");
}

std::string Steps5(const std::string& content) {
    return In(5, "<Bricks/><BuildingInstructions><BuildingInstruction><Step>" + content +
                     "</Step></BuildingInstruction></BuildingInstructions>");
}

std::string Nested(const std::string& start, const std::string& end) {
    std::string starts, ends;
    for (int i = 0; i < 200000; ++i) {
        starts += start;
        ends += end;
    }
    return starts + ends;
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

constexpr const char* kScene5 = R"({"name":"","cameras":[],"bricks":[],"rigidSystems":[],"groupSystems":[],)"
                                R"("buildingInstructions":[],"meta":[],"bricksCamera":null,"behaviors":[]})";

}  // namespace

// Every way in which a document can be wrong, in one run.
TEST(WqfCheck, TellsWhatIsWrong) {
    const std::string end1 = "<GroupRef groupRef='1'/>", end2 = "<GroupRef groupRef='2'/>";
    const std::string twice = "refID='1' materials='1'/><Part designID='1' refID='1'";
    const struct {
        std::string text;
        std::vector<std::string> errors;  // of the last attempt
        std::uint32_t mask;
        bool loaded = false;
    } rows[] = {
        {In(4, "<a>"), {"parserError"}, 512},
        {In(4, "", "1"), {"versionError expected Version 4 actual Version 4.1"}, 2},
        {In(4, "<Scene cameraRefID='1'/>"), {"cameraError error detail nonExistingCamera"}, 8},
        {In(4, "<Cameras><Camera/></Cameras>"), {"cameraError error detail missingRefID"}, 8},
        {Steps4("<BuildingInstruction cameraRefID='1'/>"), {"biError error detail nonExistingCamera"}, 256},
        {Steps4("<BuildingInstruction><Step cameraRefID='1'/></BuildingInstruction>"),
         {"biError error detail nonExistingCamera"},
         256},
        {Steps4("<BuildingInstruction><Step><PartRef/></Step></BuildingInstruction>"),
         {"biError error detail nonExistingPart"},
         256},
        {Part4("materialID='1'"), {"partError error detail missingRefID"}, 32},
        {Part4("refID='1'"), {"partError error detail notOneMaterial"}, 32},
        {Part4("refID='1' materialID='1' assemblyID='1'"), {"partError error detail assembly"}, 32},
        {Part4("refID='1' materialID='1' flexRefID='1'"), {"partError error detail flex"}, 32},
        {Joint4(end1 + end2), {}, 0, true},
        {Joint4(end1 + end2 + end1), {"jointError"}, 4},
        {Joint4(end1 + "<GroupRef groupRef='3'/>"), {"jointError", "jointError"}, 4},
        {Joint4(end1 + "<GroupRef groupRef='2' ax='1'/>"), {"jointError"}, 4},
        {Joint4(end1 + end1), {"jointError"}, 4},
        {Part4("refID='1' materialID='1' flexRefID='1' controlPoint='1'"), {}, 0},

        {In(5, "<a>"), {"versionError expected Version 4 actual Version 5", "parserError"}, 514},
        {"<Model/>", {"unknown error detail missingWQFMLTag"}, 1024},
        {In(5, "", "1"), {"versionError expected Version 4 actual Version 5.1"}, 2},
        {In(5, ""), {}, 0},
        {In(5, "<Cameras><Camera/></Cameras><Bricks/>"), {"cameraError error detail missingRefID"}, 8},
        {In(5, "<Cameras><Camera refID='1'/><Camera refID='1'/></Cameras><Bricks/>"),
         {"cameraError error detail reusedRefID"},
         8},
        {In(5, "<Bricks cameraRef='1'/>"), {"cameraError error detail nonExistingCamera"}, 8, true},
        {Bricks5("<Brick/>"), {"brickError error detail missingRefID"}, 16},
        {Bricks5("<Brick refID='1' designID='1'/><Brick refID='1'/>"), {"brickError error detail reusedRefID"}, 16},
        {Bricks5("<Brick refID='1' designID='0'/>"), {"brickError error detail missingDesignID"}, 16},
        {Part5("materials='1'"), {"partError error detail missingRefID"}, 32},
        {Part5(twice), {"partError error detail reusedRefID"}, 32},
        {Bricks5("<Brick refID='1' designID='1'><Part refID='1'/></Brick>"),
         {"partError error detail missingDesignID"},
         32},
        {Part5("refID='1' materials='1,x'"), {"partError error detail wrongMaterial design id 1"}, 32, true},
        {Part5("refID='1'"), {"partError error detail missingMaterial design id 1"}, 32},
        {Part5("refID='1' materials='1' decoration='x'"),
         {"partError error detail wrongDecoration design id 1"},
         32,
         true},
        {Part5("refID='1' materials='1'", "<Bone/>"), {"boneError error detail missingRefID"}, 64},
        {Part5("refID='1' materials='1'", "<Bone refID='1'/><Bone refID='1'/>"),
         {"boneError error detail reusedRefID"},
         64},
        {Rigids5("<Rigid/>"), {"rigidError error detail missingRefID"}, 128},
        {Rigids5("<Rigid refID='1'/><Rigid refID='1'/>"), {"rigidError error detail reusedRefID"}, 128},
        {Rigids5("<Joint type='x'/>"), {"jointError"}, 4},
        {Rigids5("<Joint type='ball'><RigidRef rigidRef='1'/></Joint>"), {"jointError"}, 4},
        {Steps5("<Camera cameraRef='1'/>"), {"biError error detail nonExistingCamera"}, 256},
        {Steps5("<PartRef/>"), {"biError error detail nonExistingPart"}, 256},
    };
    const TemporaryFolder folder;
    int number = 100;
    for (const auto& row : rows) folder.Write(std::to_string(++number) + ".wqfml", row.text);
    const Result result = Wqf({"check", "--options", "0", "--format", "json", folder.Path().string()});
    EXPECT_EQ(result.exit, 1);
    const Json documents = Json::parse(result.out);
    ASSERT_EQ(documents.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].text);
        const Json& last = documents[i]["attempts"].back();
        EXPECT_EQ(last["errors"].get<std::vector<std::string>>(), rows[i].errors);
        EXPECT_EQ(last["errorMask"], rows[i].mask);
        EXPECT_EQ(last["loaded"], rows[i].loaded);
        EXPECT_EQ(documents[i]["loaded"], rows[i].loaded);
    }
}

TEST(WqfCheck, PrintsEveryFormat) {
    const TemporaryFolder folder;
    const std::string five =
        folder.Write("5.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", In(5, "<Bricks/>")).Bytes());
    const std::string four = folder.Write("4.wqfml", In(4, ""));
    const std::string six = folder.Write("6.wqfml", In(6, ""));
    const std::string greedy = folder.Write(
        "g", In(4,
                "<Scene><Model><Group><Part/><Part refID='1' materialID='1' flexRefID='1' controlPoint='4294967294'/>"
                "</Group></Model></Scene>"));
    const std::string inside = five + "/image100.wqfml";
    const std::string foreign = folder.Write("\xE9.wqf", "");
    const std::string refused =
        R"({"format":5,"loaded":false,"errorMask":2,"errors":["versionError expected Version 5 actual Version )";

    const Result good = Wqf({"check", "--format=ndjson", four, inside});
    EXPECT_EQ(good.exit, 0) << "that another loader gave up first is no error";
    EXPECT_EQ(good.out, R"({"path":")" + four + R"(","loaded":true,"version":"4","attempts":[)" + refused +
                            R"(4"]},{"format":4,"loaded":true,"errorMask":0,"errors":[]}]})"
                            "\n"
                            R"({"path":")" +
                            inside +
                            R"(","loaded":true,"version":"5","attempts":[)"
                            R"({"format":5,"loaded":true,"errorMask":0,"errors":[]}]})"
                            "\n");
    EXPECT_EQ(good.pieces, 2);
    EXPECT_EQ(Json::parse(Wqf({"check", "--format=json", greedy}).out)[0]["attempts"][1].dump(),
              R"({"format":4,"loaded":false,"errorMask":32,"errors":["partError error detail missingRefID"],)"
              R"("reason":"indices in the document ask for more entries than its size allows"})");

    const Result text = Wqf({"check", four, inside, six, greedy, foreign, folder / "gone"});
    EXPECT_EQ(text.exit, 1);
    const std::string root = folder.Path().string();
    EXPECT_EQ(text.out, four + ": loaded, format 4\n" + inside + ": loaded, format 5\n" + six +
                            ": not loaded\n"
                            "  format 5: versionError expected Version 5 actual Version 6\n"
                            "  format 4: versionError expected Version 4 actual Version 6\n" +
                            greedy +
                            ": not loaded\n"
                            "  format 5: versionError expected Version 5 actual Version 4\n"
                            "  format 4: partError error detail missingRefID\n"
                            "  format 4: indices in the document ask for more entries than its size allows\n" +
                            root + "/\xEF\xBF\xBD.wqf: not loaded\n  the path is not UTF-8\n" + root +
                            "/gone: not loaded\n"
                            "  format 5: pathError path file" +
                            root + "/gone\n");
    EXPECT_EQ(text.err, "wqf: " + root + "/gone: no such file\n");
}

TEST(WqfScene, PrintsOneDocument) {
    const TemporaryFolder folder;
    const std::string archive =
        folder.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", In(5, "<Bricks/>")).Bytes());
    for (const std::string& path : {archive, archive + "/IMAGE100.WQFML"}) {
        const Result result = Wqf({"scene", path});
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_EQ(result.out, R"({"path":")" + path + R"(","version":"5","scene":)" + kScene5 + "}\n");
    }
    const std::string bad = folder.Write("bad", Bricks5("<Brick/><Brick refID='1'/>"));
    const Result result = Wqf({"scene", bad});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.out, R"({"path":")" + bad +
                              R"(","version":null,"scene":null})"
                              "\n");
    EXPECT_EQ(result.err, "wqf: " + bad + ": brickError error detail missingRefID\nwqf: " + bad +
                              ": brickError error detail missingDesignID\n");
    const std::string joint = folder.Write("joint", Joint4("<GroupRef groupRef='1'/><GroupRef groupRef='2'/>"));
    EXPECT_EQ(CountOf(Wqf({"scene", joint}).out, "rigid1"), 0u) << "joints are passed over unless told otherwise";
    EXPECT_EQ(CountOf(Wqf({"scene", "--options", "0", joint}).out, R"("rigid1":[0,0],"rigid2":[0,1])"), 1u);
}

TEST(WqfScene, PrintsWhatIsNestedDeeply) {
    const TemporaryFolder folder;
    const std::string steps = "<BuildingInstructions><BuildingInstruction>" + Nested("<Step>", "</Step>") +
                              "</BuildingInstruction></BuildingInstructions>";
    const std::string groups =
        "<GroupSystems><GroupSystem>" + Nested("<Group>", "</Group>") + "</GroupSystem></GroupSystems>";
    const std::string four = folder.Write("4", In(4, steps));
    const std::string five = folder.Write("5", In(5, "<Bricks/>" + groups + steps));
    EXPECT_EQ(Wqf({"check", four, five}).exit, 0);
    EXPECT_EQ(CountOf(Wqf({"scene", four}).out, R"("events":[{"type":0)"), 200000u);
    const Result result = Wqf({"scene", five});
    EXPECT_EQ(CountOf(result.out, R"("groups":[{)"), 200000u);
    EXPECT_EQ(CountOf(result.out, R"("events":[{"type":0)"), 200000u);

    const Result closed = Shell("{ \"$WQF\" scene '" + four + "'; echo $? >&2; } | head -c 1");
    EXPECT_EQ(closed.err, std::to_string(128 + SIGPIPE) + "\n");
    const Result full = Shell("\"$WQF\" scene '" + four + "' >/dev/full");
    EXPECT_EQ(full.exit, 1);
    EXPECT_EQ(full.err, "wqf: standard output: no space left on device\n");
}

TEST(WqfCatalogue, PrintsTheTables) {
    const Json catalogue = Json::parse(Wqf({"catalogue"}).out);
    EXPECT_EQ(catalogue["substitutions"].size(), 21u);
    EXPECT_EQ(catalogue["firstCorrections"].size(), 2u);
    EXPECT_EQ(catalogue["secondCorrections"].size(), 16u);
    EXPECT_EQ(catalogue["legacyCorrections"].size(), 6u);
}

TEST(WqfLook, RefusesWrongUse) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"check"},
                                               {"check", "--options", "-1", "a"},
                                               {"check", "--format", "plist", "a"},
                                               {"scene"},
                                               {"scene", "a", "b"},
                                               {"scene", "--options", "4294967296", "a"},
                                               {"catalogue", "a"}}) {
        const Result result = Wqf(arguments);
        EXPECT_EQ(result.exit, 2) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

}  // namespace ZEMA::testing
