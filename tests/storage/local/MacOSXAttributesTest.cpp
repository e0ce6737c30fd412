#include "storage/local/MacOSXAttributes.h"

#include <fcntl.h>
#include <stdlib.h>

#include <filesystem>

#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kTicksPerSecond = 10'000'000;
constexpr std::uint64_t kSomeDay = 133'000'000'000'000'000;  // a whole second

// Makes a file or a folder of that mode under the name "item".
void MakeItem(const testing::TemporaryFolder& folder, bool isDirectory, mode_t mode) {
    isDirectory ? void(fs::create_directory(folder / "item")) : void(folder.Write("item", ""));
    ASSERT_EQ(chmod((folder / "item").c_str(), mode), 0);
}

TEST(MacOSXAttributes, ReadsFlagsFromTheOwnersPermissions) {
    const struct {
        bool isDirectory;
        mode_t mode;
        std::uint8_t before, flags;
    } rows[] = {
        {false, 0644, 0x00, 0x0E}, {true, 0755, 0x00, 0x2F},  {false, 0400, 0x00, 0x02}, {false, 0100, 0x00, 0x20},
        {false, 0077, 0x00, 0x00}, {false, 0400, 0xFF, 0xC2}, {true, 0500, 0x90, 0xA3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << (row.isDirectory ? "folder " : "file ") << std::oct << row.mode);
        const LocalTree tree;
        MakeItem(tree.folder, row.isDirectory, row.mode);
        ElementFlags flags{row.before};
        EXPECT_TRUE(tree.directory->GetChildFlags("item", &flags));
        EXPECT_EQ(flags.bits, row.flags);
        EXPECT_TRUE(!tree.directory->GetChildFlags("missing", &flags) && flags.bits == row.flags);
    }
}

TEST(MacOSXAttributes, WritesThemBackAndLeavesTheOthersAlone) {
    const struct {
        const char* what;
        bool isDirectory;
        mode_t before;
        std::uint8_t flags;
        mode_t after;
    } rows[] = {
        {"directory, nothing else", true, 0755, 0x01, 0155},
        {"entries writable makes a directory writable", true, 0555, 0x09, 0355},
        {"and no file", false, 0644, 0x08, 0044},
        {"readable and executable", false, 0204, 0x22, 0504},
        {"writable", false, 0, 0x04, 0200},
        {"the bits above the permissions stay", true, 01777, 0x03, 01577},
    };
    for (const auto& row : rows) {
        const LocalTree tree;
        fs::create_symlink("item", tree.folder / "link");
        const ElementFlags flags{row.flags};
        for (const char* name : {"item", "link"}) {
            SCOPED_TRACE(row.what + std::string(", by the name ") + name);
            fs::remove(tree.folder / "item");
            MakeItem(tree.folder, row.isDirectory, row.before);
            EXPECT_TRUE(tree.directory->SetChildFlags(name, &flags));
            EXPECT_EQ(ModeOf(tree.folder / "item"), row.after);
        }
        EXPECT_FALSE(tree.directory->SetChildFlags("missing", &flags));
    }
}

TEST(MacOSXAttributes, AreThoseOfTheOwnPath) {
    const LocalTree tree;
    const auto check = [&](const char* name, auto& element, std::uint8_t flagsToSet, mode_t mode) {
        SCOPED_TRACE(name);
        const ElementFlags flags{flagsToSet};
        const ElementTimes times{kSomeDay, kSomeDay, 0};
        EXPECT_TRUE(element.SetTimes(&times) && element.SetFlags(&flags));
        EXPECT_EQ(ModeOf(tree.folder / name), mode);
        EXPECT_EQ(element.GetFlags().bits, flagsToSet | ElementFlags::kExecutable);
        EXPECT_EQ(element.GetTimes().modified, kSomeDay);
        fs::remove(tree.folder / name);
        EXPECT_FALSE(element.SetTimes(&times) || element.SetFlags(&flags)) << "nothing is there any more";
        EXPECT_EQ(element.GetFlags(), ElementFlags());
        EXPECT_EQ(element.GetTimes(), ElementTimes());
    };
    chmod(tree.folder.Write("file", "").c_str(), 0604);
    check("file", *tree.OpenFile("file", kReadStyle), 0x22, 0504);
    ASSERT_EQ(mkdir((tree.folder / "folder").c_str(), 0705), 0);
    check("folder", *tree.Open(tree.folder / "folder"), 0x03, 0505);
}

// The first and the last tick stand for what is out of reach.
TEST(MacOSXAttributes, ClampsDates) {
    const LocalTree tree;
    const bool hasMemory = fs::exists("/dev/shm");  // whose dates are not limited as those of most disks are
    const testing::TemporaryFolder folder(hasMemory ? fs::path("/dev/shm") : fs::temp_directory_path());
    const std::string path = folder.Write("file", "");
    const struct {
        time_t seconds;
        std::uint64_t ticks;
    } rows[] = {{-20'000'000'000, 0}, {2'000'000'000'000, ~std::uint64_t{0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.seconds);
        const timespec times[] = {{row.seconds, 0}, {row.seconds, 0}};
        struct stat status = {};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0) + stat(path.c_str(), &status), 0);
        if (status.st_mtime != row.seconds) GTEST_SKIP() << "no file system here keeps such dates";
        ElementTimes read;
        EXPECT_TRUE(tree.Open(folder.Path().string())->GetChildTimes("file", &read));
        EXPECT_EQ(read.modified, row.ticks);
    }
}

TEST(MacOSXAttributes, WritesTwoTimesAndReadsThree) {
    const LocalTree tree;
    tree.folder.Write("file", "");
    // A whole second comes back exactly, a finer tick as near as doubles since 1601 come.
    for (const std::uint64_t ticks : {kSomeDay, kSomeDay + 1'234'567}) {
        const ElementTimes written{ticks - kTicksPerSecond, ticks, 5};
        ASSERT_TRUE(tree.directory->SetChildTimes("file", &written));
        const ElementTimes times = tree.OpenFile("file", kReadStyle)->GetTimes();
        EXPECT_NEAR(static_cast<double>(times.modified) - static_cast<double>(ticks), 0,
                    ticks % kTicksPerSecond == 0 ? 0 : 20);
        EXPECT_EQ(times.accessed, times.modified);
    }
    ElementTimes times{1, 2, 3};
    EXPECT_FALSE(tree.directory->SetChildTimes("missing", &times) || tree.directory->GetChildTimes("missing", &times));
    EXPECT_EQ(times, (ElementTimes{1, 2, 3}));

    const timespec epoch[] = {{0, 0}, {0, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (tree.folder / "file").c_str(), epoch, 0), 0);
    setenv("TZ", "Europe/Berlin", 1);  // counted from the start of 1601 in the default time zone
    EXPECT_TRUE(tree.directory->GetChildTimes("file", &times));
    unsetenv("TZ");
    EXPECT_EQ(times.modified, 11644476808 * kTicksPerSecond);
}

}  // namespace
}  // namespace ZEMA
