// wqf mend as a process.
#include <gtest/gtest.h>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

TEST(WqfMend, MakesADocumentOneThatImports) {
    const TemporaryFolder folder;
    const ArchiveMember model{.name = "IMAGE100.WQFML",
                              .contents = "<WQFML versionMajor=\"5\"><Meta/><Bricks/></WQFML>",
                              .sums = ArchiveMember::Sums::Both};
    const std::string good = folder.Write("good.wqf", ArchiveBuilder().Stored("a", "b").Bytes());
    const std::string path = folder.Write("a.wqf", ArchiveBuilder().Stored("x", "y").Add(model).Bytes());
    const std::string before = folder.Read("a.wqf");
    EXPECT_EQ(Wqf({"import", path}).exit, 1);

    const std::string reason = "'IMAGE100.WQFML' in it: it has its sizes beside flag bit 3\n";
    const Result dryRun = Wqf({"mend", "--dry-run", good, path});
    EXPECT_EQ(dryRun.out, path + ": would be rewritten: " + reason);
    EXPECT_EQ(dryRun.exit, 0);
    EXPECT_EQ(folder.Read("a.wqf"), before);

    const Result mended = Wqf({"mend", folder / "none", path});
    EXPECT_EQ(mended.out, path + ": rewritten: " + reason);
    EXPECT_EQ(mended.err, "wqf: cannot mend '" + (folder / "none") + "': no such file\n");
    EXPECT_EQ(mended.exit, 1) << "for the one that is missing";
    EXPECT_EQ(Wqf({"import", path}).exit, 0);
}

}  // namespace ZEMA::testing
