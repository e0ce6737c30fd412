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

TEST(MacOSXAttributes, LeavesFlagsThatAreNotOfPermissionsAlone) {
    const LocalTree tree;
    chmod(tree.folder.Write("file", "").c_str(), 0400);
    ElementFlags flags{0xFF};
    EXPECT_TRUE(tree.directory->GetChildFlags("file", &flags));
    EXPECT_EQ(flags.bits, 0xC2);
    EXPECT_FALSE(tree.directory->GetChildFlags("missing", &flags));
    EXPECT_EQ(flags.bits, 0xC2);
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
