// Archives made by the standard programs: what they hold is read, edited, and accepted by all of them afterwards.
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
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

struct Writer {
    const char* what;
    const char* tool;
    std::string command;
    bool opens = true;  // its members; otherwise they are listed and refused
};

void PrintTo(const Writer& writer, std::ostream* out) {
    *out << writer.what;
}

class ZipToolsTest : public ZipTest, public ::testing::WithParamInterface<Writer> {
protected:
    // What a program packs, and what it must give back.
    void Pack() {
        ASSERT_TRUE(RunIn(folder.Path().string(), "mkdir tex"));
        folder.Write("IMAGE100.WQFML", model);
        folder.Write("tex/Noise.bin", noise);
        ASSERT_TRUE(RunIn(folder.Path().string(), GetParam().command));
    }
    void ExpectSound() {
        const std::string path = folder.Write("edited.zip", Archive());
        EXPECT_EQ(ToolsThatRefuse(path), std::vector<std::string>());
    }

    TemporaryFolder folder;
    const std::string model = std::string(50000, 'w') + "end";
    const std::string noise = NoiseBytes(9000);
};

TEST_P(ZipToolsTest, ReadsAndEditsWhatItPacked) {
    ZEMA_NEEDS_TOOL(GetParam().tool);
    Pack();
    RefPointer<Directory> top = Mount(folder.Read("a.zip"));
    ASSERT_TRUE(top);
    EXPECT_EQ(NamesOf(*top), "IMAGE100.WQFML,tex/");
    EXPECT_EQ(ReadMember(*top, "image100.wqfml"), GetParam().opens ? model : kNotOpened);
    EXPECT_EQ(ReadMember(*top, "TEX/noise.bin"), GetParam().opens ? noise : kNotOpened);

    if (GetParam().opens) {
        EXPECT_TRUE(WriteMember(*top, "tex/noise.bin", model));  // the last member loses a descriptor
        EXPECT_TRUE(WriteMember(*top, "tex/new/inner.txt", noise));
        EXPECT_TRUE(WriteMember(*top, "image100.wqfml", "short"));
    } else {
        EXPECT_TRUE(top->Remove("IMAGE100.WQFML", false));
    }
    top.Reset();
    ExpectSound();
    top = Remount();
    ASSERT_TRUE(top);
    EXPECT_EQ(NamesOf(*top), GetParam().opens ? "IMAGE100.WQFML,tex/" : "tex/");
    if (!GetParam().opens) return;
    EXPECT_EQ(ReadMember(*top, "IMAGE100.WQFML"), "short");
    EXPECT_EQ(ReadMember(*top, "tex/Noise.bin"), model);
    EXPECT_EQ(ReadMember(*top, "tex/new/inner.txt"), noise);
}

INSTANTIATE_TEST_SUITE_P(
    Writers, ZipToolsTest,
    ::testing::Values(Writer{"zip", "zip", "zip -r a.zip IMAGE100.WQFML tex"},
                      Writer{"zip_stored", "zip", "zip -0 -r a.zip IMAGE100.WQFML tex"},
                      Writer{"zip_comment", "zip", "zip -r a.zip IMAGE100.WQFML tex && echo hello | zip -z a.zip"},
                      Writer{"zip_pipe", "zip", "zip -r - IMAGE100.WQFML tex | cat > a.zip", false},
                      Writer{"sevenzip", "7z", "7z a -tzip a.zip IMAGE100.WQFML tex"},
                      Writer{"sevenzip_stored", "7z", "7z a -tzip -mx=0 a.zip IMAGE100.WQFML tex"},
                      Writer{"python", "python3", kPythonToFile}, Writer{"python_stream", "python3", kPythonToStream},
                      Writer{"bsdtar", "bsdtar", "bsdtar --format zip -cf a.zip IMAGE100.WQFML tex", false}),
    [](const auto& tested) { return tested.param.what; });

}  // namespace
}  // namespace ZEMA::testing
