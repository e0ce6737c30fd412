#include "storage/local/MacOSXFile.h"

#include <string>
#include <vector>

#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

TEST(MacOSXFile, OpensWhatItsStyleAndModeAllow) {
    const struct {
        const char* what;
        AccessStyle style;
        mode_t mode;
        bool opens, reads, writes;
    } rows[] = {
        {"read, share read", {1, 0, 1, 0}, 0644, true, true, false},
        {"read and write", {1, 1, 0, 0}, 0644, true, true, true},
        {"write alone", {0, 1, 0, 0}, 0644, true, false, true},
        {"to share writing is to be able to write", {0, 0, 0, 1}, 0644, true, false, true},
        {"to share reading is to be able to read", {0, 1, 1, 0}, 0644, true, true, true},
        {"nothing", {0, 0, 0, 0}, 0644, false, false, false},
        {"reading what nobody may write", kReadStyle, 0444, true, true, false},
        {"writing what nobody may write or execute, whoever asks", kReadWriteStyle, 0444, false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LocalTree tree;
        chmod(tree.folder.Write("file", "text").c_str(), row.mode);
        const RefPointer<File> file = tree.OpenFile("file", row.style);
        ASSERT_EQ(static_cast<bool>(file), row.opens);
        if (!file) continue;
        char byte = 'x';
        std::uint64_t done = 99;
        EXPECT_EQ(Read(*file, 1, &byte, &done), row.reads);
        EXPECT_EQ(done, row.reads ? 1u : 0u);
        EXPECT_EQ(WriteAt(*file, 0, 1, "w", &done), row.writes);
        EXPECT_EQ(done, row.writes ? 1u : 0u);
        EXPECT_EQ(Seek(*file, 2) && SetSize(*file, 3), row.writes);
        EXPECT_EQ(GetPosition(*file), 2u) << "where it was, also after a failure";
    }
}

TEST(MacOSXFile, MovesBytesAndKeepsThePositionInside) {
    const LocalTree tree;
    tree.folder.Write("file", "0123456789");
    const RefPointer<File> file = tree.OpenFile("file", kReadWriteStyle);
    // On the heap: behind a buffer on the stack the address space may end within the size that is asked for.
    std::vector<char> buffer(16);
    std::uint64_t done = 99;
    EXPECT_TRUE(Read(*file, 0, buffer.data(), &done));
    EXPECT_EQ(done, 0u);
    EXPECT_TRUE(ReadAt(*file, 7, 2, buffer.data(), nullptr));
    EXPECT_EQ(std::string(buffer.data()), "78");
    EXPECT_FALSE(Read(*file, (std::uint64_t{1} << 32) + 1, buffer.data(), &done))
        << "not one byte of it, nor all 64 bits";
    EXPECT_EQ(done, 1u);
    EXPECT_FALSE(ReadAt(*file, 11, 1, buffer.data(), &done));
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(WriteAt(*file, 11, 1, "c", &done));

    EXPECT_TRUE(Seek(*file, 10));
    EXPECT_FALSE(Seek(*file, 11));
    const std::uint64_t rows[][3] = {{8, 9, 8}, {8, 8, 8}, {8, 5, 5}, {5, 20, 5}};
    for (const auto& [position, size, after] : rows) {
        EXPECT_TRUE(Seek(*file, position) && SetSize(*file, size)) << size;
        EXPECT_EQ(GetPosition(*file), after) << size;
    }
    EXPECT_FALSE(SetSize(*file, std::uint64_t{1} << 63));
    EXPECT_EQ(tree.folder.Read("file"), std::string("01234") + std::string(15, '\0'));
}

}  // namespace
}  // namespace ZEMA
