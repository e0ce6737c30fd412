// wqf mend on what other programs make.
#include <gtest/gtest.h>

#include "tests/support/ArchiveTools.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

TEST(WqfMend, TakesWhatOtherProgramsMake) {
    const std::string stream = "import sys, zipfile; z = zipfile.ZipFile(sys.stdout.buffer, \"w\", 8); ";
    const struct {
        std::string tool;
        std::string command;
        std::string reason;  // why the archive has to be mended first; empty where it imports as it is
    } rows[] = {
        {"zip", "zip -q a.wqf *", ""},
        {"zip", "zip -q - * | cat > a.wqf", "it has its sizes beside flag bit 3"},
        {"zip", "cat * | zip -q a.wqf - && printf '@ -\\n@=IMAGE100.WQFML\\n' | zipnote -w a.wqf",
         "its local header is one of ZIP64"},
        {"7z", "7z a -bso0 -tzip a.wqf *", ""},
        {"7z", "7z a -bso0 -tzip -mm=PPMd a.wqf *", "it is packed by PPMd"},
        {"bsdtar", "bsdtar -cf a.wqf --format zip *", "it has its sizes beside flag bit 3"},
        {"python3", "python3 -m zipfile -c a.wqf *", ""},
        {"python3", "python3 -c '" + stream + "z.write(\"IMAGE100.WQFML\"); z.close()' | cat > a.wqf", ""},
    };
    std::string missing;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        if (!HaveTool(row.tool)) {
            missing += row.tool + " ";
            continue;
        }
        const TemporaryFolder folder;
        folder.Write("IMAGE100.WQFML", "<WQFML versionMajor=\"5\"><Bricks/></WQFML>" + std::string(1000, ' '));
        ASSERT_TRUE(RunIn(folder.Path().string(), row.command));
        const std::string path = folder / "a.wqf";
        const std::string said =
            "wqf: " + path + ": 'IMAGE100.WQFML' in it: " + row.reason + "; 'wqf mend' rewrites it ";
        const std::string problem = Wqf({"import", path}).err;
        EXPECT_EQ(problem.substr(0, problem.find('(')), row.reason.empty() ? "" : said);
        EXPECT_EQ(Wqf({"mend", path}).exit, 0);
        EXPECT_EQ(Wqf({"import", path}).err, "");
    }
    if (!missing.empty()) GTEST_SKIP() << missing << "not installed";
}

}  // namespace ZEMA::testing
