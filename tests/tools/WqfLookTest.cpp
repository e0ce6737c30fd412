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

TEST(WqfCheck, PrintsEveryFormat) {
    const TemporaryFolder folder;
    const std::string five =
        folder.Write("5.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", In(5, "<Bricks/>")).Bytes());
    const std::string inside = five + "/image100.wqfml";
    const std::string four = folder.Write("4.wqfml", In(4, ""));
    const std::string foreign = folder.Write("\xE9.wqf", "");
    const std::string shown = folder.Path().string() + "/\xEF\xBF\xBD.wqf";
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
    EXPECT_EQ(Json::parse(Wqf({"check", "--format=json", foreign}).out).dump(),
              R"([{"path":")" + shown + R"(","pathBytes":")" + Base64Of(foreign) +
                  R"(","loaded":false,"version":null,"attempts":[],"reason":"it is empty"}])");

    const std::string gone = folder / "gone";
    const Result text = Wqf({"check", four, foreign, gone});
    EXPECT_EQ(text.exit, 1);
    EXPECT_EQ(text.out, four + ": loaded, format 4\n" + shown + ": not loaded\n  it is empty\n" + gone +
                            ": not loaded\n  no such file\n  format 5: pathError path file" + gone + "\n");
    EXPECT_EQ(text.err, "wqf: " + gone + ": no such file\n");

    const std::string faulty = folder.Write("faulty", Joint4("<GroupRef groupRef='1'/>"));
    EXPECT_EQ(Wqf({"check", faulty}).exit, 0) << "joints are passed over";
    EXPECT_EQ(Wqf({"check", "--options", "0", faulty}).exit, 1);
    EXPECT_EQ(Wqf({"check", folder.Write("camera", In(5, "<Bricks cameraRef='1'/>"))}).exit, 1)
        << "it loads, and is not fine";
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
    const std::string bad = folder.Write("bad", In(5, "<Bricks><Brick/><Brick refID='1'/></Bricks>"));
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
}

TEST(WqfCatalogue, PrintsTheTables) {
    const Json catalogue = Json::parse(Wqf({"catalogue"}).out);
    EXPECT_EQ(catalogue["substitutions"].size(), 21u);
    EXPECT_EQ(catalogue["firstCorrections"].size(), 2u);
    EXPECT_EQ(catalogue["secondCorrections"].size(), 16u);
    EXPECT_EQ(catalogue["legacyCorrections"].size(), 6u);
}

}  // namespace ZEMA::testing
