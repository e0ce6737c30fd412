// Archives made by the standard programs: what they hold is read, edited, and accepted by all of them afterwards.
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

std::string Python(const std::string& output, const std::string& more) {
    return "python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(" + output +
           ", 'w', 8)\nz.write('IMAGE100.WQFML')\n" + more + "z.write('tex/Noise.bin')\nz.close()\"";
}

TEST_F(ZipTest, ReadsAndEditsWhatOtherProgramsPack) {
    const struct {
        const char* tool;
        std::string command;
        bool opens = true;  // its members; otherwise they are listed and refused
    } rows[] = {
        {"zip", "zip -r a.zip IMAGE100.WQFML tex"},
        {"zip", "zip -0 -r a.zip IMAGE100.WQFML tex"},
        {"zip", "zip -r a.zip IMAGE100.WQFML tex && echo hello | zip -z a.zip"},
        {"zip", "zip -r - IMAGE100.WQFML tex | cat > a.zip", false},
        {"7z", "7z a -tzip a.zip IMAGE100.WQFML tex"},
        {"7z", "7z a -tzip -mx=0 a.zip IMAGE100.WQFML tex"},
        {"python3", Python("'a.zip'", "z.comment = b'by Python'\n")},
        // To a stream that cannot seek, so that sums come behind the data.
        {"python3", Python("sys.stdout.buffer", "z.write('tex')\n") + " | cat > a.zip"},
        {"bsdtar", "bsdtar --format zip -cf a.zip IMAGE100.WQFML tex", false},
    };
    const std::string model = kText + "end";
    const std::string noise = NoiseBytes(9000);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        if (!HaveTool(row.tool)) continue;
        const TemporaryFolder folder;
        ASSERT_TRUE(RunIn(folder.Path().string(), "mkdir tex"));
        folder.Write("IMAGE100.WQFML", model);
        folder.Write("tex/Noise.bin", noise);
        ASSERT_TRUE(RunIn(folder.Path().string(), row.command));

        RefPointer<Directory> top = Mount(folder.Read("a.zip"));
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), "IMAGE100.WQFML,tex/");
        EXPECT_EQ(ReadMember(*top, "image100.wqfml"), row.opens ? model : kNotOpened);
        EXPECT_EQ(ReadMember(*top, "TEX/noise.bin"), row.opens ? noise : kNotOpened);
        // The last member may lose a descriptor.
        EXPECT_TRUE(row.opens ? WriteMember(*top, "tex/noise.bin", model) : top->Remove("IMAGE100.WQFML", false));
        top.Reset();
        EXPECT_EQ(ToolsThatRefuse(folder.Write("edited.zip", Archive())), std::vector<std::string>());
        top = Remount();
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), row.opens ? "IMAGE100.WQFML,tex/" : "tex/");
        EXPECT_EQ(ReadMember(*top, "tex/Noise.bin"), row.opens ? model : kNotOpened);
    }
}

}  // namespace
}  // namespace ZEMA::testing
