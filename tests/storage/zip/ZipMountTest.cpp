// Which files are mounted as archives, and under which names.
#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

const std::string kText = "what a member holds";

ArchiveBuilder SmallArchive() {
    return ArchiveBuilder().Stored("one.txt", kText).Folder("dir/").Deflated("dir/two.txt", kText + kText);
}

std::string WithComment(std::size_t length) {
    return SmallArchive().Comment(std::string(length, '.')).Bytes();
}

TEST_F(ZipTest, MountsWhatHasASoundEndRecord) {
    const BuiltArchive good = SmallArchive().Build();
    const auto broken = [&good](std::size_t field, std::uint16_t value) {
        return BuiltArchive(good).Set16(good.endRecord + field, value).bytes;
    };
    const std::size_t second = good.centralHeaders[1];
    const std::size_t last = good.centralHeaders[2];
    const std::string all = "dir/,one.txt";
    const struct {
        const char* what;
        std::string bytes;
        std::string names;  // "-": not mounted
    } rows[] = {
        {"a good archive", good.bytes, all},
        {"an empty one", ArchiveBuilder().Bytes(), ""},
        {"a comment", WithComment(100), all},
        {"a comment over several blocks of the search", WithComment(5000), all},
        {"a signature across two blocks", WithComment(1028 - 22 - 2), all},
        {"the longest comment that is searched", WithComment(65535 - 22), all},
        {"one byte more", WithComment(65535 - 21), "-"},
        {"bytes before the archive", "#!" + good.bytes, "-"},
        {"no signature", "just text, and more of it", "-"},
        {"four bytes", "PK\5\6", "-"},
        {"the record cut", good.bytes.substr(0, good.bytes.size() - 1), "-"},
        {"this disk is 1", broken(kEndThisDisk, 1), "-"},
        {"the directory on disk 1", broken(kEndDirectoryDisk, 1), "-"},
        {"two counts", broken(kEndEntriesOnDisk, 2), "-"},
        {"the directory elsewhere", broken(kEndDirectoryOffset, static_cast<std::uint16_t>(good.directory - 1)), "-"},
        {"a signature in the comment counts", SmallArchive().Comment("PK\5\6").Bytes(), "-"},
        {"another signature ends it", BuiltArchive(good).Set32(second, 0).bytes, "one.txt"},
        {"a name that reaches behind the file", BuiltArchive(good).Set16(last + kCentralNameLength, 999).bytes, "-"},
        {"a comment that hides the next header, so that no header follows",
         BuiltArchive(good).Set16(good.centralHeaders[0] + kCentralCommentLength, 60).bytes, "one.txt"},
        {"a header that does not fit into the file",
         BuiltArchive(good)
             .Set16(second + kCentralExtraLength, static_cast<std::uint16_t>(good.endRecord - second - 56))
             .bytes,
         "-"},
        {"the count is not believed",
         BuiltArchive(good).Set16(good.endRecord + 8, 7).Set16(good.endRecord + 10, 7).bytes, all},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> top = Mount(row.bytes);
        EXPECT_EQ(top ? NamesOf(*top) : "-", row.names);
        EXPECT_EQ(Archive(), row.bytes);  // looking changes nothing
    }
}

TEST_F(ZipTest, PlacesNames) {
    const std::string latin1 = "\xE4.txt";
    const struct {
        const char* what;
        std::vector<std::string> members;
        std::string names;  // at the top; "-": not mounted
        const char* folder;
        std::string inFolder;
    } rows[] = {
        {"directories without entries", {"a/b/c", "a/d"}, "a/", "a", "b/,d"},
        {"an entry for a directory comes later", {"a/b", "a/"}, "a/", "a", "b"},
        {"case does not count", {"Dir/x", "DIR/y", "dir/X"}, "Dir/", "dir", "x,y"},
        {"UTF-8", {"\xC3\xA4.txt", "\xC3\xA4/x"}, "\xC3\xA4/,\xC3\xA4.txt", "\xC3\x84", "x"},
        {"neither ASCII nor UTF-8", {latin1, "x/" + latin1, latin1 + "/y", "b"}, "b", "", "b"},
        {"a file is no directory", {"a", "a/b"}, "a", "a", kNotOpened},
        {"a file over a directory", {"a/b", "a"}, "a/", "a", "b"},
        {"an empty name", {"", "a"}, "a", "", "a"},
        {"what no path reaches", {"../a", "./b", "c/../d", "e/.", "f/..", std::string("g\0h", 3), "i"}, "i", "", "i"},
        {"nor behind a byte-order mark",
         {"\xEF\xBB\xBF../a", "\xEF\xBB\xBF./b", "c/\xEF\xBB\xBF..", "i"},
         "i",
         "",
         "i"},
        {"a slash in front", {"a", "/b"}, "-", "", ""},
        {"a slash alone", {"a", "/"}, "-", "", ""},
        {"two slashes", {"a", "b//c"}, "-", "", ""},
        {"two slashes at the end", {"a", "b//"}, "-", "", ""},
        {"a backslash is a character", {"a\\b"}, "a\\b", "", "a\\b"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ArchiveBuilder builder;
        for (const std::string& name : row.members) builder.Stored(name, name.ends_with("/") ? "" : kText);
        const RefPointer<Directory> top = Mount(builder.Bytes());
        ASSERT_EQ(top ? NamesOf(*top) : "-", row.names);
        if (!top) continue;
        const RefPointer<Directory> folder = OpenDirectory(*top, FromUtf8(row.folder), false);
        EXPECT_EQ(folder ? NamesOf(*folder) : kNotOpened, row.inFolder);
    }
}

TEST_F(ZipTest, MapsAttributesToFlags) {
    const struct {
        const char* what;
        std::uint16_t madeBy;
        std::uint32_t attributes;
        const char* name;
        int flags;
        bool readOnlyArchive = false;
    } rows[] = {
        {"Unix, 0644", 0x031E, 0100644u << 16, "a", 0x0E},
        {"Unix, 0444", 0x031E, 0100444u << 16, "a", 0x02},
        {"Unix, 0200: only the owner counts", 0x031E, 0100255u << 16, "a", 0x0C},
        {"OS X, 0755", 0x131E, 0100755u << 16, "a", 0x2E},
        {"Unix ignores the low byte", 0x031E, 0100644u << 16 | 0x13, "a", 0x0E},
        {"MS-DOS", 0x0014, 0, "a", 0x0E},
        {"MS-DOS, read-only and hidden", 0x0014, 0x03, "a", 0x12},
        {"MS-DOS, directory bit on a file name", 0x0014, 0x10, "a", 0x0E},
        {"MS-DOS, directory", 0x0014, 0x10, "a/", 0x0F},
        {"another host", 0x0A14, 0xFFFFFFFF, "a", 0x0E},
        {"a directory by its name", 0x031E, 0100755u << 16, "a/", 0x2F},
        {"a read-only archive", 0x031E, 0100644u << 16, "a", 0x06, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ArchiveMember member;
        member.name = row.name;
        member.versionMadeBy = row.madeBy;
        member.externalAttributes = row.attributes;
        MemoryNode& file = Put("a.wqf", ArchiveBuilder().Add(member).Bytes());
        file.flags.Set(ElementFlags::kWritable, !row.readOnlyArchive);
        const RefPointer<Directory> top = Remount();
        ASSERT_TRUE(top);
        ElementFlags flags;
        ASSERT_TRUE(top->GetChildFlags("A", &flags));
        EXPECT_EQ(flags.bits, row.flags);
    }
}

TEST_F(ZipTest, ImplicitDirectoriesHaveNothingOfTheirOwn) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("a/b/c", kText).Bytes());
    const RefPointer<Directory> a = OpenDirectory(*top, "a", false);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->GetFlags().bits, 0x01);
    EXPECT_FALSE(a->IsEmpty());
    const ElementFlags flags{0x0F};
    const ElementTimes times{1, 2, 3};
    EXPECT_FALSE(a->SetFlags(&flags) || top->SetChildFlags("a", &flags) || a->SetTimes(&times));
    Listing listing;
    ASSERT_TRUE(List(*a, "b", &listing));
    const Descriptor& b = *listing.begin();
    EXPECT_EQ(b.flags.bits, 0x01);
    EXPECT_EQ(b.size, 0u);
    EXPECT_EQ(b.times, ElementTimes());
}

TEST_F(ZipTest, GoesByManyNames) {
    const std::string bytes = SmallArchive().Bytes();
    const struct {
        const char* file;
        const char* path;
        std::string mounted;  // "-": not at all
    } rows[] = {
        {"b.wqf", "mem/b.wqf", "b.wqf"}, {"b.wqf", "mem/B.WQF", "B.WQF"},     {"b.zip", "mem/b.zip", "b"},
        {"b.ZIP", "mem/b", "b"},         {"b.wqf.zip", "mem/b.wqf", "b.wqf"}, {".zip", "mem/.zip", ".zip"},
        {"b.wqf", "mem/b", "-"},         {"b.wqf", "mem/b.wqf.zip", "-"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        volume.top->children.Clear();
        Put(row.file, bytes);
        const RefPointer<Directory> top = Open(row.path);
        ASSERT_EQ(top ? Bytes(top->Name()) : "-", row.mounted);
        if (!top) continue;
        String alias = FromUtf8("mem/" + row.mounted + ".ZIP/dir");
        EXPECT_TRUE(OpenDirectory(*root, alias, false)) << "while mounted, also known with .zip";
    }
}

TEST_F(ZipTest, StaysMountedWhileSomethingIsOpen) {
    Put("a.wqf", SmallArchive().Bytes());
    RefPointer<File> member = OpenFile(*root, "mem/a.wqf/dir/two.txt", &kReadStyle, false, nullptr);
    ASSERT_TRUE(member);
    const int operations = volume.operations;
    RefPointer<Directory> again = Open("mem/A.wqf");
    EXPECT_EQ(volume.operations, operations) << "found without reading the archive again";
    EXPECT_EQ(member->Parent()->Parent(), again.Get());
    EXPECT_EQ(NamesOf(*mem), "a.wqf/");
    member.Reset();
    EXPECT_EQ(Open("mem/a.wqf"), again);
    again.Reset();
    EXPECT_EQ(NamesOf(*mem), "a.wqf");
    EXPECT_TRUE(Remount());
    EXPECT_GT(volume.operations, operations) << "nobody held it";
}

TEST_F(ZipTest, MakesAnArchiveOfAnEmptyFile) {
    const RefPointer<Directory> top = Mount("");
    ASSERT_TRUE(top);
    EXPECT_TRUE(top->IsEmpty());
    EXPECT_EQ(Archive(), "PK\5\6" + std::string(18, '\0'));
    Put("b.wqf", "").flags.Set(ElementFlags::kWritable, false);
    EXPECT_FALSE(Open("mem/b.wqf"));
    EXPECT_EQ(BytesOf("b.wqf"), "");
}

TEST_F(ZipTest, MountsArchivesInArchives) {
    const std::string inner = SmallArchive().Bytes();
    Put("a.wqf", ArchiveBuilder().Stored("stored.zip", inner).Deflated("d/deflated.wqf", inner).Bytes());
    EXPECT_EQ(ReadMember(*root, "mem/a.wqf/stored/one.txt"), kText);
    EXPECT_EQ(ReadMember(*root, "mem/a.wqf/d/deflated.wqf/dir/two.txt"), kText + kText);
    EXPECT_TRUE(WriteMember(*root, "mem/a.wqf/d/deflated.wqf/three.txt", kText));
    EXPECT_EQ(ReadStrictly(ReadStrictly(BytesOf("a.wqf"))["d/deflated.wqf"])["three.txt"], kText);
    const RefPointer<Directory> top = Open("mem/a.wqf");
    const RefPointer<Directory> stored = Open("mem/a.wqf/stored.zip");
    EXPECT_TRUE(WriteMember(*top, "stored", kText) && top->Remove("stored", false));
    EXPECT_EQ(Open("mem/a.wqf/stored"), stored) << "not the member that is gone";
}

}  // namespace
}  // namespace ZEMA::testing
