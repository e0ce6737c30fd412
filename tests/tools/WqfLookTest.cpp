// wqf check, scene and catalogue as processes.

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "host/system/Utf8Text.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

using Json = nlohmann::ordered_json;

std::string In(int format, const std::string& content, const std::string& minor = "0") {
    return "<WQFML versionMajor='" + std::to_string(format) + "' versionMinor='" + minor + "'>" + content + "</WQFML>";
}

std::string Joint4(const std::string& ends) {
    return In(4, "<Scene><Model><Group refID='1'/><Group refID='2'/><Joint>" + ends + "</Joint></Model></Scene>");
}

std::string Bricks5(const std::string& content) {
    return In(5, "<Bricks>" + content + "</Bricks>");
}

// A brick's only part, whose start tag ends with these attributes.
std::string Part5(const std::string& attributes, const std::string& content = "") {
    return Bricks5("<Brick refID='1' designID='1'><Part designID='1' " + attributes + ">" + content +
                   "</Part></Brick>");
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

// One document for each kind of error.
TEST(WqfCheck, TellsWhatIsWrong) {
    const std::string ends = "<GroupRef groupRef='1'/><GroupRef groupRef='2'/>";
    const std::string rigids = "<Bricks/><RigidSystems><RigidSystem><Rigid/></RigidSystem></RigidSystems>";
    const std::string steps = "<BuildingInstruction><Step><PartRef/></Step></BuildingInstruction>";
    const struct {
        std::string text;
        std::vector<std::string> errors;  // of the last attempt
        std::uint32_t mask;
        bool loaded = false;
    } rows[] = {
        {In(5, "<Bricks/>"), {}, 0, true},
        {In(5, ""), {}, 0},
        {In(5, "", "1"), {"versionError expected Version 4 actual Version 5.1"}, 2},
        {Joint4(ends), {}, 0, true},
        {Joint4(ends + "<GroupRef groupRef='1'/>"), {"jointError"}, 4},
        {In(5, "<Bricks cameraRef='1'/>"), {"cameraError error detail nonExistingCamera"}, 8, true},
        {Bricks5("<Brick/>"), {"brickError error detail missingRefID"}, 16},
        {Part5("refID='1' materials='1,x'"), {"partError error detail wrongMaterial design id 1"}, 32, true},
        {Part5("refID='1' materials='1'", "<Bone/>"), {"boneError error detail missingRefID"}, 64},
        {In(5, rigids), {"rigidError error detail missingRefID"}, 128},
        {In(4, "<BuildingInstructions>" + steps + "</BuildingInstructions>"),
         {"biError error detail nonExistingPart"},
         256},
        {In(4, "<a>"), {"parserError"}, 512},
        {In(5, "<a>"), {"versionError expected Version 4 actual Version 5", "parserError"}, 514},
        {"<Model/>", {"unknown error detail missingWQFMLTag"}, 1024},
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
    EXPECT_EQ(Wqf({"check", folder / "106.wqfml"}).exit, 1) << "it loads, and is not fine";
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
    const std::string below = five + "/none.wqfml";
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

    const Result text = Wqf({"check", four, inside, six, greedy, foreign, below, folder / "gone"});
    EXPECT_EQ(text.exit, 1);
    const std::string root = folder.Path().string();
    EXPECT_EQ(text.out, four + ": loaded, format 4\n" + inside + ": loaded, format 5\n" + six +
                            ": not loaded\n"
                            "  it is of format '6'; formats 5 and 4 are read\n"
                            "  format 5: versionError expected Version 5 actual Version 6\n"
                            "  format 4: versionError expected Version 4 actual Version 6\n" +
                            greedy +
                            ": not loaded\n"
                            "  indices in the document ask for more entries than its size allows\n"
                            "  format 4: partError error detail missingRefID\n"
                            "  format 4: indices in the document ask for more entries than its size allows\n"
                            "  format 5: versionError expected Version 5 actual Version 4\n" +
                            root + "/\xEF\xBF\xBD.wqf: not loaded\n  it is empty\n" + below +
                            ": not loaded\n  no such file\n  format 5: pathError path file" + below + "\n" + root +
                            "/gone: not loaded\n  no such file\n  format 5: pathError path file" + root + "/gone\n");
    EXPECT_EQ(text.err, "wqf: " + root + "/gone: no such file\n");
    EXPECT_EQ(Wqf({"scene", below}).err,
              "wqf: " + below + ": no such file\nwqf: " + below + ": pathError path file" + below + "\n");
    EXPECT_EQ(Json::parse(Wqf({"check", "--format=json", foreign}).out).dump(),
              R"([{"path":")" + root + "/\xEF\xBF\xBD.wqf" + R"(","pathBytes":")" + Base64Of(foreign) +
                  R"(","loaded":false,"version":null,"attempts":[],"reason":"it is empty"}])");
}

// Whoever watches a folder for documents to import would import them again each time they are looked at.
TEST(WqfLook, OpensNothingForWriting) {
    const TemporaryFolder folder;
    const std::string model = In(5, "<Bricks/>");
    const std::string inner = ArchiveBuilder().Stored("IMAGE100.WQFML", model).Bytes();
    const std::string path =
        folder.Write("a.wqf", ArchiveBuilder().Stored("IMAGE100.WQFML", model).Stored("b.wqf", inner).Bytes());
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, path.c_str(), IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB), 0);
    for (const char* command : {"check", "scene", "ls", "cat"}) {
        EXPECT_EQ(Wqf({command, path}).exit, 0) << command;
        EXPECT_EQ(Wqf({command, path + "/b.wqf"}).exit, 0) << command;
    }
    inotify_event event;
    EXPECT_LT(read(watch, &event, sizeof(event)), 0);
    close(watch);
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
    EXPECT_EQ(result.err, "wqf: " + bad + ": a brick in it has no design, or no number of its own\nwqf: " + bad +
                              ": brickError error detail missingRefID\nwqf: " + bad +
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

}  // namespace ZEMA::testing
