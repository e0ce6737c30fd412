// What files and directories do by themselves: moves inside a file, attributes, answers of the base classes.
#include "storage/File.h"

#include "tests/storage/StorageTest.h"

namespace ZEMA::testing {
namespace {

constexpr std::uint64_t kChunk = 0x20000;

class FileTest : public StorageTest {
protected:
    // A file whose bytes tell their place.
    RefPointer<File> MakeFile(std::size_t size) {
        bytes_.clear();
        for (std::size_t index = 0; index < size; ++index) bytes_ += static_cast<char>(index * 7 + index / 251);
        return OpenFile(*mem, "f", &kReadWriteStyle, false, nullptr);
    }
    std::string& bytes_ = volume.Put("f", "")->bytes;
};

TEST_F(FileTest, MovesOverlappingRanges) {
    const struct {
        const char* what;
        std::uint64_t size, from, to, length;
    } rows[] = {
        {"towards the end, into what follows", 10, 1, 3, 6},
        {"beyond the end, which moves", 10, 4, 8, 6},
        {"over several chunks, towards the end by one byte", 3 * kChunk + 5, 0, 1, 3 * kChunk + 5},
        {"over several chunks, towards the start by one byte", 3 * kChunk + 5, 1, 0, 3 * kChunk + 4},
        {"exactly one chunk", 2 * kChunk, 0, kChunk, kChunk},
        {"nothing, which extends the file all the same", 10, 3, 20, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<File> file = MakeFile(row.size);
        std::string expected = bytes_;
        expected.resize(std::max(row.size, row.to + row.length));
        expected.replace(row.to, row.length, bytes_, row.from, row.length);
        EXPECT_TRUE(MoveRange(*file, row.from, row.to, row.length));
        EXPECT_TRUE(bytes_ == expected);
    }
    EXPECT_FALSE(MoveRange(*MakeFile(10), 0, ~std::uint64_t{0} - 3, 4 + 1)) << "to where no offset leads";
    EXPECT_EQ(bytes_.size(), 10u);
}

TEST_F(FileTest, SetsAttributesTimesFirst) {
    const ElementFlags flags{0x2F};
    const ElementTimes times{1, 2, 3};
    const auto check = [&](auto& element) {
        const std::string name = Bytes(element.Name());
        for (const char* refused : {"", "times", "flags"}) {
            SCOPED_TRACE(name + " refuses " + refused);
            volume.log.clear();
            volume.refused = refused;
            EXPECT_EQ(element.SetAttributes(&flags, &times), volume.refused.empty());
            EventLog expected = {"times " + name, "flags " + name};
            if (volume.refused == "times") expected.pop_back();
            EXPECT_EQ(volume.log, expected);
        }
    };
    const RefPointer<File> file = MakeFile(0);
    check(*file);
    check(*mem);
    EXPECT_EQ(file->File::GetFlags().bits, 0x02) << "of a storage that tells none";
    EXPECT_EQ(mem->Directory::GetFlags().bits, 0x03);
}

}  // namespace
}  // namespace ZEMA::testing
