#include <string>

#include "StorageTest.h"

namespace ZEMA::testing {
namespace {

class MoveRangeTest : public StorageTest {
protected:
    // A file whose bytes tell their place.
    RefPointer<File> MakeFile(std::size_t size) {
        MemoryNode* const node = volume.Put("f", "");
        for (std::size_t index = 0; index < size; ++index) node->bytes += static_cast<char>(index * 7 + index / 251);
        return OpenFile(*mem, "f", &kReadWriteStyle, false, nullptr);
    }
    std::string& Contents() { return volume.At("f")->bytes; }
};

constexpr std::uint64_t kChunk = 0x20000;

TEST_F(MoveRangeTest, MovesOverlappingRanges) {
    const struct {
        const char* what;
        std::size_t size;
        std::uint64_t from, to, length;
    } rows[] = {
        {"towards the end, into what follows", 10, 1, 3, 6},
        {"towards the start", 10, 3, 1, 6},
        {"beyond the end, which moves", 10, 4, 8, 6},
        {"over several chunks, towards the end by one byte", 3 * kChunk + 5, 0, 1, 3 * kChunk + 5},
        {"over several chunks, towards the start by one byte", 3 * kChunk + 5, 1, 0, 3 * kChunk + 4},
        {"exactly one chunk", 2 * kChunk, 0, kChunk, kChunk},
        {"onto itself", 10, 2, 2, 5},
        {"nothing, which extends the file all the same", 10, 3, 20, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<File> file = MakeFile(row.size);
        std::string expected = Contents();
        const std::string moved = expected.substr(row.from, row.length);
        if (expected.size() < row.to + row.length) expected.resize(row.to + row.length);
        expected.replace(row.to, row.length, moved);
        EXPECT_TRUE(MoveRange(*file, row.from, row.to, row.length));
        EXPECT_TRUE(Contents() == expected);
    }
}

TEST_F(MoveRangeTest, StopsAtTheFirstFailure) {
    // The extension, then a reading and a writing for each of three chunks.
    for (int failing = 1; failing <= 7; ++failing) {
        const RefPointer<File> file = MakeFile(2 * kChunk + 1);
        volume.operations = 0;
        volume.failAt = failing;
        EXPECT_FALSE(MoveRange(*file, 0, 1, 2 * kChunk + 1));
        EXPECT_EQ(volume.operations, failing);
    }
    volume.failAt = 0;
    const RefPointer<File> file = MakeFile(10);
    EXPECT_FALSE(MoveRange(*file, 0, ~std::uint64_t{0} - 3, 4 + 1));  // would end behind the last offset
    EXPECT_FALSE(MoveRange(*file, ~std::uint64_t{0} - 3, 0, 4 + 1));
    EXPECT_EQ(Contents().size(), 10u);
}

}  // namespace
}  // namespace ZEMA::testing
