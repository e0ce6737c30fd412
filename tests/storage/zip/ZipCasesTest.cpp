// Cases of archives and their members; archives of many forms, and those that the standard programs make and accept
// again.
#include "tests/storage/StorageCases.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

using Members = std::map<std::string, std::string>;

// Cases whose members stand in "mem/a.wqf".
struct ZipCases : ZipTest {
    using ZipTest::Archive;
    using ZipTest::ExpectSound;
    void TestBody() override {}

    void Prepare(const Words& words) {
        const std::string& kind = words[0];
        if (kind == "readonly") {
            isReadOnly = true;
        } else if (kind == "order") {
            std::vector<std::size_t> order;
            for (std::size_t i = 1; i < words.size(); ++i) order.push_back(std::stoul(words[i]));
            builder.DirectoryOrder(order);
        } else {
            ArchiveMember member{.name = Meant(words[1]), .contents = Meant(words[2]), .deflated = kind == "deflated"};
            if (kind == "behind") member.sums = ArchiveMember::Sums::Behind;
            if (kind == "folder") member.externalAttributes = 0040755u << 16 | 0x10;
            if (kind == "protected") member.externalAttributes = 0100444u << 16;
            if (kind == "gap") member.gapBefore = "left over";
            builder.Add(member);
        }
    }

    std::string Do(const Words& words) {
        if (!isPut) Put("a.wqf", builder.Bytes()).flags.Set(ElementFlags::kWritable, !isReadOnly);
        if (!isPut || words[0] == "remount") top.Reset(), steps.DropAll(), top = Remount();
        isPut = true;
        if (words[0] == "remount") return top ? "yes" : "no";
        if (words[0] == "same") return Archive() == builder.Bytes() ? "yes" : "no";
        if (words[0] == "first") return std::to_string(FirstMember(*top).localHeaderOffset);
        if (words[0] == "size") return std::to_string(Archive().size());
        if (words[0] != "holds") return steps.Do("mem/a.wqf", words);
        Members members;
        for (auto word = words.begin() + 1; word != words.end(); ++word) {
            members[word->substr(0, word->find('='))] = Meant(word->substr(word->find('=') + 1));
        }
        ExpectSound(*top, members);
        return "yes";
    }

    ArchiveBuilder builder;
    bool isReadOnly = false;
    bool isPut = false;
    RefPointer<Directory> top;
    StorageSteps steps;
};

TEST(ZipStorage, DoesWhatItsCasesShow) {
    ExpectStorageCases<ZipCases>(ZEMA_CASES "/members.cases");
}

// Members f, g, h and the folder p, in many forms.
ArchiveBuilder Shape(int number) {
    ArchiveBuilder archive;
    if (number == 0) return archive;
    for (const std::string name : {"f", "g", "p/", "h"}) {
        ArchiveMember member{.name = name, .contents = name == "p/" ? "" : name + kText, .deflated = name > "g"};
        if (number == 3 || number == 5) member.localExtra = std::string("\xFE\xCA\5\0local", 9);
        if (number == 3 || number == 4) member.centralExtra = std::string("\xFE\xCA\5\0extra", 9);
        if (number == 3 || number == 5) member.comment = "a comment";
        if (number == 6) member.sums = ArchiveMember::Sums::Behind;
        if (number == 7) member.gapBefore = "left over";
        archive.Add(member);
    }
    if (number == 4) archive.DirectoryOrder({2, 3, 0, 1});
    if (number == 5) archive.DirectoryOrder({3, 2, 1, 0});
    if (number == 2 || number == 5) archive.Comment("the archive's comment");
    return archive;
}

TEST(ZipStorage, IsSoundAfterEveryEdit) {
    const char* const edits[] = {
        "create p",           "write g t*20000",
        "write f noise*8193", "write p/f t*131073",
        "make p/q",           "write p/q/i noise*1000",
        "write h -",          "write G noise*8191",
        "copy P q",           "move F p/q/f",
        "cut g 100",          "write Q/f t",
        "move p/Q q/q2",      "remove P force",
        "move H g over",      "write i noise*131071",
        "cut I 8192",         "copy q/f i over",
        "remove q/q2/i",      "make p",
        "move G p/h",         "move q p/r",
        "write f t*8192",     "rename p/R s",
        "remove f",
    };
    for (int shape = 0; shape < 8; ++shape) {
        SCOPED_TRACE(shape);
        ZipCases cases;
        cases.builder = Shape(shape);
        int step = 0;
        for (const std::string edit : edits) {
            SCOPED_TRACE(edit);
            std::istringstream text(edit);
            ASSERT_NE(cases.Do(Words{std::istream_iterator<std::string>(text), {}}), "no");
            cases.ExpectSound(*cases.top, ReadStrictly(cases.Archive()));
            if (++step % 7 == 0) {
                ASSERT_EQ(cases.Do({"remount"}), "yes");
            }
        }
        EXPECT_EQ(cases.Do({"holds", "i=t", "p/=-", "p/h=-", "p/s/=-", "p/s/f=t", "p/s/q/=-", "p/s/q/i=noise*1000",
                            "p/s/q2/=-", "p/s/q2/f=noise*8193"}),
                  "yes");
        const TemporaryFolder folder;
        EXPECT_EQ(ToolsThatRefuse(folder.Write("a.zip", cases.Archive())), std::vector<std::string>());
    }
}

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
