// Opening and reading members: what is refused, what is read, and how much memory it may take.
#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"

namespace ZEMA::testing {
namespace {

TEST_F(ZipTest, RefusesMembersThatDisagreeWithThemselves) {
    const BuiltArchive stored = ArchiveBuilder().Stored("m", "abc").Build();
    const BuiltArchive deflated = ArchiveBuilder().Deflated("m", std::string(5000, 'd')).Build();
    const std::size_t local = 0;
    const std::size_t central = stored.directory;
    ArchiveMember twice;
    twice.name = "m";
    twice.contents = "abc";
    twice.sums = ArchiveMember::Sums::Both;
    const auto both = [&](std::size_t inLocal, std::size_t inCentral, std::uint16_t value) {
        return BuiltArchive(stored).Set16(local + inLocal, value).Set16(central + inCentral, value).bytes;
    };
    const auto sizes = [](const BuiltArchive& good, std::size_t inLocal, std::size_t inCentral, std::uint32_t value) {
        return BuiltArchive(good).Set32(inLocal, value).Set32(good.directory + inCentral, value).bytes;
    };
    const struct {
        const char* what;
        std::string bytes;
        std::string contents;
    } rows[] = {
        {"no local header", BuiltArchive(stored).Set32(local, 0).bytes, kNotOpened},
        {"a local header behind the end",
         BuiltArchive(stored).Set32(central + kCentralLocalHeaderOffset, 0xFFFFFFF0).bytes, kNotOpened},
        {"other flags", BuiltArchive(stored).Set16(local + kLocalFlags, 2).bytes, kNotOpened},
        {"another method", BuiltArchive(stored).Set16(local + kLocalMethod, 8).bytes, kNotOpened},
        {"another checksum", BuiltArchive(stored).Set32(local + kLocalCrc32, 1).bytes, kNotOpened},
        {"another packed size", BuiltArchive(stored).Set32(local + kLocalCompressedSize, 2).bytes, kNotOpened},
        {"another size", BuiltArchive(stored).Set32(local + kLocalUncompressedSize, 2).bytes, kNotOpened},
        {"encrypted", both(kLocalFlags, kCentralFlags, 1), kNotOpened},
        {"method 12", both(kLocalMethod, kCentralMethod, 12), kNotOpened},
        {"data behind 2^32", BuiltArchive(stored).Set16(local + kLocalExtraLength, 0xFFFF).bytes, kNotOpened},
        {"stored, more than the archive holds",
         sizes(stored, kLocalUncompressedSize, kCentralUncompressedSize, 4000000000), kNotOpened},
        {"packed data behind the end", sizes(deflated, kLocalCompressedSize, kCentralCompressedSize, 4000000000),
         kNotOpened},
        {"more than deflate can pack", sizes(deflated, kLocalUncompressedSize, kCentralUncompressedSize, 0xFFFFFFFF),
         kNotOpened},
        {"data that is no stream", BuiltArchive(deflated).Set32(31, 0xFFFFFFFF).bytes, kNotOpened},
        {"less than the stream gives", sizes(deflated, kLocalUncompressedSize, kCentralUncompressedSize, 4999),
         kNotOpened},
        {"the stream cut", sizes(deflated, kLocalCompressedSize, kCentralCompressedSize, 9), kNotOpened},
        {"empty, although packed", ArchiveBuilder().Deflated("m", "").Bytes(), ""},
        {"sums behind and in the header", ArchiveBuilder().Add(twice).Bytes(), kNotOpened},
        {"the checksum is not verified", sizes(stored, kLocalCrc32, kCentralCrc32, 1), std::string("abc")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> top = Mount(row.bytes);
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), "m");
        EXPECT_EQ(ReadMember(*top, "m"), row.contents);
        EXPECT_EQ(VolumeOf(*top).MembersInFileOrder().First()->dataOffset, 0u) << "nothing is left of the attempt";
    }
}

TEST_F(ZipTest, ReadsZerosWhereTheStreamEndsEarly) {
    BuiltArchive built = ArchiveBuilder().Deflated("m", "short").Build();
    built.Set32(kLocalUncompressedSize, 20000).Set32(built.directory + kCentralUncompressedSize, 20000);
    const RefPointer<Directory> top = Mount(built.bytes);
    EXPECT_EQ(ReadMember(*top, "m"), "short" + std::string(19995, '\0'));
}

TEST_F(ZipTest, ReadsRanges) {
    const std::string text = NoiseBytes(20000);
    for (const bool deflated : {false, true}) {
        SCOPED_TRACE(deflated);
        const RefPointer<Directory> top =
            Mount((deflated ? ArchiveBuilder().Deflated("m", text) : ArchiveBuilder().Stored("m", text)).Bytes());
        const RefPointer<File> file = OpenMember(*top, "m", kReadStyle);
        ASSERT_TRUE(file);
        const struct {
            std::uint64_t offset, size;
            bool whole;
            std::uint64_t done;
        } rows[] = {
            {0, 20000, true, 20000},
            {8190, 10, true, 10},
            {19999, 1, true, 1},
            {19999, 2, false, 1},
            {20000, 0, true, 0},
            {20000, 1, false, 0},
            {20001, 0, false, 0},
            {5, ~std::uint64_t{0}, false, 19995},
            {~std::uint64_t{0}, 1, false, 0},
        };
        for (const auto& row : rows) {
            SCOPED_TRACE(row.offset);
            std::string buffer(20000, '\0');
            std::uint64_t done = 99;
            const std::uint64_t before = GetPosition(*file);
            EXPECT_EQ(ReadAt(*file, row.offset, row.size, buffer.data(), &done), row.whole);
            EXPECT_EQ(done, row.done);
            EXPECT_EQ(buffer.substr(0, done), text.substr(std::min<std::size_t>(row.offset, 20000), done));
            EXPECT_EQ(GetPosition(*file), row.offset > 20000 ? before : row.offset + row.done);
        }
        ASSERT_TRUE(Seek(*file, 19998) && !Seek(*file, 20001));
        char two[2];
        EXPECT_TRUE(Read(*file, 2, two) && std::string(two, 2) == text.substr(19998));
        EXPECT_FALSE(Write(*file, 1, two) || SetSize(*file, 1));
    }
}

TEST_F(ZipTest, ServesStoredMembersStraightFromTheArchive) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("m", "abc").Bytes());
    const RefPointer<File> file = OpenMember(*top, "m", {1, 0, 1, 1});
    const ZipFileHeader& member = *VolumeOf(*top).MembersInFileOrder().First();
    EXPECT_TRUE(member.segments.Empty());
    EXPECT_EQ(Contents(*file), "abc");
    volume.failAt = volume.operations + 1;
    EXPECT_EQ(Contents(*file), kNotRead);
    const RefPointer<File> writer = OpenMember(*top, "m", {0, 1, 1, 1});
    ASSERT_TRUE(writer && WriteAt(*writer, 1, 3, "xyz"));
    EXPECT_EQ(Contents(*file), "axyz") << "contents in memory are shared";
}

TEST_F(ZipTest, OpensAndRemovesVeryDeepMembers) {
    std::string deep;
    for (int i = 0; i < 32000; ++i) deep += "a/";
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("b", "").Stored(deep + "m", "deep").Bytes());
    ASSERT_TRUE(top);
    EXPECT_EQ(ReadMember(*top, (deep + "m").c_str()), "deep");
    EXPECT_TRUE(top->Remove("a", true));
    EXPECT_EQ(NamesOf(*top), "b");
}

TEST_F(ZipTest, FindsFilesWithOneCursorForAll) {
    const RefPointer<Directory> top =
        Mount(ArchiveBuilder().Stored("d/b", "1").Stored("D/e/f", "").Stored("d/A", "2").Stored("d/c", "3").Bytes());
    const RefPointer<Directory> one = OpenDirectory(*top, "d", false);
    const RefPointer<Directory> two =
        New<ZipStorageDirectory>("d", top.Get(), &VolumeOf(*top), &dynamic_cast<ZipStorageDirectory&>(*one).Node());
    EXPECT_TRUE(one->IsFindDone() && !one->IsFindActive() && !one->OpenFoundFile(&kReadStyle, nullptr));
    one->FindNextFile();  // without a walk: nothing
    one->FindFirstFile();
    std::string found;
    for (; !two->IsFindDone(); two->FindNextFile()) found += Bytes(one->OpenFoundFile(&kReadStyle, nullptr)->Name());
    EXPECT_EQ(found, "Abc");
    EXPECT_TRUE(one->IsFindActive());

    two->FindFirstFile();
    ASSERT_TRUE(one->Remove("a", false));
    EXPECT_EQ(Contents(*two->OpenFoundFile(&kReadStyle, nullptr)), "1") << "the cursor moved on";
    ASSERT_TRUE(one->Remove("b", false) && one->Remove("c", false));
    EXPECT_TRUE(two->IsFindDone());
    two->EndFind();
    EXPECT_FALSE(one->IsFindActive());
}

}  // namespace
}  // namespace ZEMA::testing
