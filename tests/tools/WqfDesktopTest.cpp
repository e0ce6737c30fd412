// The handlers as the indexers start them, and their setting up.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kModel =
    R"(<WQFML versionMajor="5"><Meta><Author name="&lt;Zo&#235;&gt;"/></Meta><Bricks/></WQFML>)";

std::string Question(const std::string& path) {
    return "filename: " + std::to_string(path.size()) + "\n" + path + "mimetype: 1\nx\n";
}

}  // namespace

// All of them in one go: whatever a file holds, the next one is answered, and nothing else goes to standard output.
TEST(WqfHandler, AnswersRecollForWhateverLiesThere) {
    const TemporaryFolder folder;
    const std::string good = folder.Write("good.wqf", kModel);
    std::string questions;
    for (const std::string bytes : {"", "PK", "<WQFML", "junk"}) {
        questions += Question(folder.Write("bad" + std::to_string(bytes.size()) + ".wqf", bytes));
    }
    questions += Question(folder.Path().string()) + Question("/dev/zero") + Question("") + Question(good);
    const Result result = Wqf({"handler", "recoll"}, questions);
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.err, "");
    std::string failures;
    for (int i = 0; i < 7; ++i) failures += "Fileerror: 0\n\n";
    EXPECT_EQ(result.out.substr(0, failures.size()), failures);
    const std::string page = result.out.substr(failures.size());
    EXPECT_TRUE(page.starts_with("Document: ") && page.ends_with("</html>\nEofnext: 0\n\n")) << page;
    EXPECT_NE(page.find("content=\"&lt;Zoë&gt;\""), std::string::npos);
    EXPECT_EQ(Wqf({"handler", "recoll"}, "what?\n").exit, 1);
}

TEST(WqfHandler, AnswersKFileMetaDataByOneObject) {
    const TemporaryFolder folder;
    const nlohmann::json question = {{"path", folder.Write("good.wqf", kModel)}, {"mimetype", "application/x-wqf"}};
    const Result result = Wqf({"handler", "kfilemetadata"}, question.dump(2));
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(nlohmann::json::parse(result.out)["properties"]["author"], "<Zoë>");
}

TEST(WqfSetup, FindsTheUsersConfiguration) {
    const TemporaryFolder home;
    const std::string run = "HOME=" + home.Path().string() + " \"$WQF\" setup recoll";
    const std::string folder = home / ".recoll";
    EXPECT_NE(Shell("unset RECOLL_CONFDIR; " + run).out.find(folder + "/mimemap: changed\n"), std::string::npos);
    EXPECT_EQ(Shell("unset RECOLL_CONFDIR; " + run).out, folder + ": nothing to change\n");
    EXPECT_TRUE(fs::exists(folder));
    EXPECT_EQ(Shell("export RECOLL_CONFDIR=" + folder + "; " + run + " --remove").exit, 0);
    EXPECT_FALSE(fs::exists(folder));
    const Result missing = Shell("unset RECOLL_CONFDIR; " + run + " --confdir /dev/null/x");
    EXPECT_EQ(missing.exit, 1);
    EXPECT_EQ(missing.err.substr(0, 16), "wqf: /dev/null/x");
}

}  // namespace ZEMA::testing
