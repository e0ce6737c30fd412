// Contents in memory: blocks that are halved, and ranges across them.
#include <gtest/gtest.h>

#include "core/RefPointer.h"
#include "storage/zip/Crc32.h"
#include "storage/zip/ZipFileHeader.h"
#include "storage/zip/ZipFormat.h"
#include "tests/support/ArchiveBuilder.h"

namespace ZEMA::testing {
namespace {

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
