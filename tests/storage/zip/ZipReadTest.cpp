// Opening and reading members: what is refused, what is read, and the blocks of memory that hold it.
#include "storage/zip/ZipFormat.h"

#include <gtest/gtest.h>

#include "core/RefPointer.h"
#include "storage/zip/Crc32.h"
#include "storage/zip/ZipFileHeader.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveBuilder.h"

namespace ZEMA::testing {
namespace {

TEST_F(ZipTest, RefusesMembersThatDisagreeWithThemselves) {
    const std::string text(5000, 'd');
    const BuiltArchive stored = ArchiveBuilder().Stored("m", "abc").Build();
    const BuiltArchive deflated = ArchiveBuilder().Deflated("m", text).Build();
    const auto local = [&](std::size_t field, std::uint32_t value) {
        return BuiltArchive(stored).Set32(field, value).bytes;
    };
    const auto both16 = [](BuiltArchive good, std::size_t inLocal, std::size_t inCentral, std::uint16_t value) {
        return good.Set16(inLocal, value).Set16(good.directory + inCentral, value).bytes;
    };
    const auto both = [](BuiltArchive good, std::size_t inLocal, std::size_t inCentral, std::size_t value) {
        return good.Set(inLocal, value, 4).Set(good.directory + inCentral, value, 4).bytes;
    };
    const auto size = [&](const BuiltArchive& good, std::size_t value) {
        return both(good, kLocalUncompressedSize, kCentralUncompressedSize, value);
    };
    const auto packedSize = [&](std::size_t value) {
        return both(deflated, kLocalCompressedSize, kCentralCompressedSize, value);
    };
    const std::size_t data = 31;
    const std::size_t held = stored.bytes.size() - data;
    const std::size_t most = 1032 * DeflateBytes(text).size() + 65536;
    const auto beside = [](std::size_t field) {
        const ArchiveMember member{.name = "m", .contents = "abc", .sums = ArchiveMember::Sums::Behind};
        return ArchiveBuilder().Add(member).Build().Set32(field, 3).bytes;
    };
    const struct {
        const char* what;
        std::string bytes;
        std::string contents;
    } rows[] = {
        {"no local header", local(0, 0), kNotOpened},
        {"a local header behind the end",
         BuiltArchive(stored).Set32(stored.directory + kCentralLocalHeaderOffset, 0xFFFFFFF0).bytes, kNotOpened},
        {"other flags", BuiltArchive(stored).Set16(kLocalFlags, 2).bytes, kNotOpened},
        {"another method", BuiltArchive(stored).Set16(kLocalMethod, 8).bytes, kNotOpened},
        {"another checksum", local(kLocalCrc32, 1), kNotOpened},
        {"another packed size", local(kLocalCompressedSize, 2), kNotOpened},
        {"another size", local(kLocalUncompressedSize, 2), kNotOpened},
        {"encrypted", both16(stored, kLocalFlags, kCentralFlags, 1), kNotOpened},
        {"method 12, of data that method 8 could unpack", both16(deflated, kLocalMethod, kCentralMethod, 12),
         kNotOpened},
        {"stored, all that the archive holds", size(stored, held), size(stored, held).substr(data)},
        {"stored, one byte more", size(stored, held + 1), kNotOpened},
        {"packed data behind the end", packedSize(deflated.bytes.size() - data + 1), kNotOpened},
        {"packed data up to the end", packedSize(deflated.bytes.size() - data), text},
        {"as much as deflate could pack: zeros where the stream ends early", size(deflated, most),
         text + std::string(most - text.size(), '\0')},
        {"more than deflate can pack", size(deflated, most + 1), kNotOpened},
        {"data that is no stream", BuiltArchive(deflated).Set32(data, 0xFFFFFFFF).bytes, kNotOpened},
        {"less than the stream gives", size(deflated, 4999), kNotOpened},
        {"the stream cut", packedSize(9), kNotOpened},
        {"empty, although packed", ArchiveBuilder().Deflated("m", "").Bytes(), ""},
        {"a checksum beside the one behind", beside(kLocalCrc32), kNotOpened},
        {"a packed size", beside(kLocalCompressedSize), kNotOpened},
        {"a size", beside(kLocalUncompressedSize), kNotOpened},
        {"the checksum is not verified", both(stored, kLocalCrc32, kCentralCrc32, 1), "abc"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> top = Mount(row.bytes);
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), "m");
        EXPECT_EQ(ReadMember(*top, "m"), row.contents);
        EXPECT_EQ(FirstMember(*top).dataOffset, 0u) << "nothing is left of the attempt";
    }
}

TEST_F(ZipTest, ReadsRanges) {
    const std::string text = NoiseBytes(20000);
    for (const bool deflated : {false, true}) {
        SCOPED_TRACE(deflated);
        const RefPointer<Directory> top =
            Mount(ArchiveBuilder().Add({.name = "m", .contents = text, .deflated = deflated}).Bytes());
        const RefPointer<File> file = OpenMember(*top, "m", kReadStyle);
        ASSERT_TRUE(file);
        const struct {
            std::uint64_t offset, size;
            bool whole;
            std::uint64_t done;
        } rows[] = {
            {0, 20000, true, 20000},
            {8190, 10, true, 10},
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
        std::uint64_t done = 99;
        EXPECT_FALSE(Write(*file, 1, two, &done) || SetSize(*file, 1));
        EXPECT_EQ(done, 0u);
    }
}

TEST_F(ZipTest, ServesStoredMembersStraightFromTheArchive) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("m", "abc").Bytes());
    const RefPointer<File> file = OpenMember(*top, "m", {1, 0, 1, 1});
    EXPECT_TRUE(FirstMember(*top).segments.Empty());
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

std::size_t largestBlock = 0;  // what the allocator below gives at most

void* AllocateUpTo(std::size_t size) {
    return size <= largestBlock ? std::malloc(size) : nullptr;
}

// Blocks as it would give, of one byte each: for sizes that nobody has.
void* PretendUpTo(std::size_t size) {
    return size <= largestBlock ? std::malloc(1) : nullptr;
}

std::vector<std::uint32_t> SizesOf(const ZipFileHeader& member) {
    std::vector<std::uint32_t> sizes;
    std::uint64_t end = 0;
    for (const auto& segment : member.segments) {
        EXPECT_EQ(segment.offset, end) << "end to end";
        end += segment.size;
        sizes.push_back(segment.size);
    }
    return sizes;
}

TEST(ZipSegments, AreHalvedUntilTheyFit) {
    const struct {
        const char* what;
        std::uint64_t size;
        std::size_t largest;
        std::vector<std::uint32_t> sizes;  // empty: no memory
    } rows[] = {
        {"rounded up", 1, 8192, {8192}},
        {"exactly", 16384, 16384, {16384}},
        {"one block is always tried first", 8193, 1 << 20, {16384}},
        {"two halves", 8193, 16383, {8192, 8192}},
        {"halves of halves", 73728, 36863, {18432, 18432, 18432, 18432}},
        {"a half is rounded up to 1024", 139264, 9216, std::vector<std::uint32_t>(16, 9216)},
        {"no block below 16383 is split", 8192, 8191, {}},
        {"what was had is given back", 73728, 9215, {}},
        {"no further than 2^32", 0x100000000, ~std::size_t{0}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        largestBlock = row.largest;
        const RefPointer<ZipFileHeader> member = New<ZipFileHeader>();
        EXPECT_EQ(AppendSegments(*member, row.size, AllocateUpTo), !row.sizes.empty());
        EXPECT_EQ(SizesOf(*member), row.sizes);
    }
}

// 8192 bytes are there and as many blocks of a size as fit below 2^32. Halves that are rounded up take more room.
TEST(ZipSegments, EndBelowTheLastOffset) {
    const struct {
        std::size_t largest;
        std::size_t blocks;  // 0: they do not fit
    } rows[] = {{0xFFFFFFFF, 1}, {0x7FFFFFFF, 0}, {0x10000000, 0}, {0x100000, 0}, {0x4000, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.largest);
        largestBlock = row.largest;
        const RefPointer<ZipFileHeader> member = New<ZipFileHeader>();
        ASSERT_TRUE(AppendSegments(*member, 1, PretendUpTo));
        const std::uint64_t room = kMaxOffset - 8192;
        EXPECT_EQ(AppendSegments(*member, room, PretendUpTo), row.blocks != 0);
        EXPECT_EQ(SizesOf(*member).size(), 1 + row.blocks);
        EXPECT_FALSE(AppendSegments(*member, room + 1, PretendUpTo));
    }
}

TEST(ZipSegments, CarryRangesAcrossTheirBorders) {
    const RefPointer<ZipFileHeader> member = New<ZipFileHeader>();
    largestBlock = 8192;
    ASSERT_TRUE(AppendSegments(*member, 30000, AllocateUpTo) && AppendSegments(*member, 1, AllocateUpTo));
    ASSERT_EQ(SizesOf(*member).size(), 5u);
    const std::string bytes = NoiseBytes(40960);
    CopyToSegments(*member, 0, bytes.size(), bytes.data());
    ZeroSegments(*member, 8190, 8200);
    std::string expected = bytes;
    expected.replace(8190, 8200, 8200, '\0');
    for (const std::size_t offset : {0u, 1u, 8189u, 8191u, 8192u, 16384u, 40959u}) {
        SCOPED_TRACE(offset);
        std::string read(40960 - offset, '\0');
        CopyFromSegments(*member, offset, read.size(), read.data());
        EXPECT_EQ(read, expected.substr(offset));
    }
    DropSegments(*member, 8193);
    EXPECT_EQ(SegmentsEnd(*member), 16384u) << "the one that 8193 lies in stays";
}

TEST(Crc32, IsThatOfArchives) {
    Crc32 crc;
    EXPECT_EQ(crc.Value(), 0u);
    crc.Update("1234", 4);
    crc.Update("56789", 5);
    EXPECT_EQ(crc.Value(), 0xCBF43926u);
}

}  // namespace
}  // namespace ZEMA::testing
