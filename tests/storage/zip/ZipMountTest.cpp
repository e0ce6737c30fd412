// Which files are mounted as archives, and under which names.
#include <ctime>

#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

const std::string kHello = "what a member holds";

ArchiveBuilder SmallArchive() {
    return ArchiveBuilder().Stored("one.txt", kHello).Folder("dir/").Deflated("dir/two.txt", kHello + kHello);
}

std::string WithComment(std::size_t length) {
    return SmallArchive().Comment(std::string(length, '.')).Bytes();
}

TEST_F(ZipTest, MountsWhatHasASoundEndRecord) {
    const BuiltArchive good = SmallArchive().Build();
    const auto broken = [&good](std::size_t field, std::uint16_t value) {
        return BuiltArchive(good).Set16(good.endRecord + field, value).bytes;
    };
    // The search goes back in steps of 1024 bytes: the signature begins `before` bytes ahead of the first such border.
    const auto across = [](std::size_t before) {
        return ArchiveBuilder().Stored("m", NoiseBytes(3000)).Comment(std::string(1002 + before, '.')).Bytes();
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
        {"a signature across two blocks, its first byte", across(1), "m"},
        {"two bytes", across(2), "m"},
        {"three bytes", across(3), "m"},
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

ArchiveMember MadeBy(std::uint16_t host, std::uint32_t attributes, const char* name = "a") {
    return {.name = name, .versionMadeBy = host, .externalAttributes = attributes};
}

TEST_F(ZipTest, MapsAttributesToFlags) {
    const struct {
        const char* what;
        ArchiveMember member;  // as an archive that can be written holds it, and one that cannot
        int flags, readOnlyFlags;
    } rows[] = {
        {"Unix, 0644", MadeBy(0x031E, 0100644u << 16), 0x0E, 0x06},
        {"Unix, 0444", MadeBy(0x031E, 0100444u << 16), 0x02, 0x02},
        {"Unix, 0200: only the owner counts", MadeBy(0x031E, 0100255u << 16), 0x0C, 0x04},
        {"OS X, 0755", MadeBy(0x131E, 0100755u << 16), 0x2E, 0x26},
        {"Unix ignores the low byte", MadeBy(0x031E, 0100644u << 16 | 0x13), 0x0E, 0x06},
        {"MS-DOS", MadeBy(0x0014, 0), 0x0E, 0x06},
        {"MS-DOS, read-only and hidden", MadeBy(0x0014, 0x03), 0x12, 0x12},
        {"MS-DOS, directory bit on a file name", MadeBy(0x0014, 0x10), 0x0E, 0x06},
        {"MS-DOS, directory", MadeBy(0x0014, 0x10, "a/"), 0x0F, 0x07},
        {"another host", MadeBy(0x0A14, 0xFFFFFFFF), 0x0E, 0x06},
        {"a directory by its name", MadeBy(0x031E, 0100755u << 16, "a/"), 0x2F, 0x27},
    };
    for (const auto& row : rows) {
        for (const bool writable : {true, false}) {
            SCOPED_TRACE(row.what);
            Put("a.wqf", ArchiveBuilder().Add(row.member).Bytes()).flags.Set(ElementFlags::kWritable, writable);
            ElementFlags flags;
            ASSERT_TRUE(Remount() && Remount()->GetChildFlags("A", &flags));
            EXPECT_EQ(flags.bits, writable ? row.flags : row.readOnlyFlags);
        }
    }
}

TEST_F(ZipTest, ImplicitDirectoriesHaveNothingOfTheirOwn) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("a/b/c", kHello).Bytes());
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

// A link's destination alone can have thousands of components. Work that grew with the square took seconds.
TEST_F(ZipTest, GivesUpSoonOnLongPaths) {
    Put("a.wqf", SmallArchive().Bytes());
    for (std::string path : {"mem", "mem/a.wqf"}) {
        for (int count = 0; count < 4000; ++count) path += "/m";
        const std::clock_t start = std::clock();
        EXPECT_FALSE(Open(path.c_str()));
        EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC) << path.substr(0, 9);
    }
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
    EXPECT_EQ(ReadMember(*root, "mem/a.wqf/stored/one.txt"), kHello);
    EXPECT_EQ(ReadMember(*root, "mem/a.wqf/d/deflated.wqf/dir/two.txt"), kHello + kHello);
    EXPECT_TRUE(WriteMember(*root, "mem/a.wqf/d/deflated.wqf/three.txt", kHello));
    EXPECT_EQ(ReadStrictly(ReadStrictly(BytesOf("a.wqf"))["d/deflated.wqf"])["three.txt"], kHello);
    const RefPointer<Directory> top = Open("mem/a.wqf");
    const RefPointer<Directory> stored = Open("mem/a.wqf/stored.zip");
    EXPECT_TRUE(WriteMember(*top, "stored", kHello) && top->Remove("stored", false));
    EXPECT_EQ(Open("mem/a.wqf/stored"), stored) << "not the member that is gone";
}

}  // namespace
}  // namespace ZEMA::testing
