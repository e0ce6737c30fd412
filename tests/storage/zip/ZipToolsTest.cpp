// Archives made by the standard programs: what they hold is read, edited, and accepted by all of them afterwards.
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

const std::string kPython = "python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(";

// Writes to a stream that cannot seek, so that sums come behind the data.
const std::string kPythonToStream = kPython +
                                    "sys.stdout.buffer, 'w', 8)\nz.write('IMAGE100.WQFML')\n"
                                    "z.write('tex')\nz.write('tex/Noise.bin')\nz.close()\" | cat > a.zip";
const std::string kPythonToFile = kPython +
                                  "'a.zip', 'w')\nz.write('IMAGE100.WQFML')\nz.write('tex/Noise.bin')\n"
                                  "z.comment = b'by Python'\nz.close()\"";

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
        {"python3", kPythonToFile},
        {"python3", kPythonToStream},
        {"bsdtar", "bsdtar --format zip -cf a.zip IMAGE100.WQFML tex", false},
    };
    const std::string model = std::string(50000, 'w') + "end";
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
        if (row.opens) {
            EXPECT_TRUE(WriteMember(*top, "tex/noise.bin", model));  // the last member loses a descriptor
            EXPECT_TRUE(WriteMember(*top, "tex/new/inner.txt", noise));
            EXPECT_TRUE(WriteMember(*top, "image100.wqfml", "short"));
        } else {
            EXPECT_TRUE(top->Remove("IMAGE100.WQFML", false));
        }
        top.Reset();
        EXPECT_EQ(ToolsThatRefuse(folder.Write("edited.zip", Archive())), std::vector<std::string>());
        top = Remount();
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), row.opens ? "IMAGE100.WQFML,tex/" : "tex/");
        if (!row.opens) continue;
        EXPECT_EQ(ReadMember(*top, "IMAGE100.WQFML"), "short");
        EXPECT_EQ(ReadMember(*top, "tex/Noise.bin"), model);
        EXPECT_EQ(ReadMember(*top, "tex/new/inner.txt"), noise);
    }
}

}  // namespace
}  // namespace ZEMA::testing
