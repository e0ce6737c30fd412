#include "storage/local/MacOSXDirectory.h"

#include <fcntl.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "tests/storage/StorageCases.h"
#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

namespace fs = std::filesystem;

// Cases in which the shell makes and looks at things, "$", and permissions bind, "ordinary".
struct LocalCases : LocalTree {
    ~LocalCases() { umask(mask); }

    void Prepare(const testing::Words& words) {
        if (words[0] == "ordinary") {
            user = std::make_unique<OrdinaryUser>(folder);
        } else {
            EXPECT_EQ(Do(words), "yes") << ::testing::PrintToString(words);
        }
    }
    std::string Do(const testing::Words& words) {
        if (words[0] != "$") {
            std::string answer = steps.Do("file" + folder.Path().string(), words);
            const std::size_t base = answer.find(folder.Path().string());
            return base == std::string::npos ? answer : "BASE" + answer.substr(base + folder.Path().string().size());
        }
        std::string command = "cd '" + folder.Path().string() + "'; {";
        for (std::size_t i = 1; i < words.size(); ++i) command += " " + words[i];
        return std::system((command + "; } >/dev/null").c_str()) == 0 ? "yes" : "no";
    }

    mode_t mask = umask(022);
    testing::StorageSteps steps;
    std::unique_ptr<OrdinaryUser> user;
};

TEST(MacOSXDirectory, DoesWhatItsCasesShow) {
    testing::ExpectStorageCases<LocalCases>(ZEMA_CASES "/folders.cases");
}

TEST(MacOSXDirectory, ForceMakesFoldersWritableForTheirOwnerAndNothingElse) {
    const LocalTree tree;
    const OrdinaryUser user(tree.folder);
    for (const char* name : {"folder", "folder/a", "folder/a/b"}) fs::create_directory(tree.folder / name);
    chmod(tree.folder.Write("folder/a/b/file", "").c_str(), 0400);
    fs::create_hard_link(tree.folder / "folder/a/b/file", tree.folder / "file");
    for (const char* name : {"folder/a/b", "folder/a", "folder"}) chmod((tree.folder / name).c_str(), 0555);
    const int a = open((tree.folder / "folder/a").c_str(), O_RDONLY);
    EXPECT_FALSE(tree.directory->Remove("folder", false));
    EXPECT_TRUE(tree.directory->Remove("folder", true));
    EXPECT_FALSE(fs::exists(tree.folder / "folder"));
    EXPECT_EQ(ModeOf(tree.folder / "file"), 0400u);
    struct stat status = {};
    EXPECT_TRUE(fstat(a, &status) == 0 && close(a) == 0);
    EXPECT_EQ(status.st_mode & 07777, 0755u);
}

TEST(MacOSXDirectory, ForceEndsAtTheFirstRefusal) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can make what belongs to somebody else";
    const LocalTree tree;
    fs::create_directories(tree.folder / "folder/foreign");
    tree.folder.Write("folder/file", "");
    ASSERT_EQ(chown((tree.folder / "folder").c_str(), OrdinaryUser::kNobody, OrdinaryUser::kNobody), 0);
    const OrdinaryUser user(tree.folder);
    EXPECT_FALSE(tree.directory->Remove("folder", true));
    EXPECT_TRUE(fs::exists(tree.folder / "folder/file"));
}

TEST(MacOSXDirectory, ListsWithFlagsTimesAndSizes) {
    const LocalTree tree;
    Listing listing;
    EXPECT_FALSE(tree.directory->List("*", &listing)) << "of an empty directory";
    EXPECT_FALSE(tree.directory->IsEmpty()) << "its contents can be read";

    chmod(tree.folder.Write("image.PNG", "12345").c_str(), 0600);
    fs::create_directory(tree.folder / "images");
    chmod((tree.folder / "images").c_str(), 0700);
    tree.folder.Write("other", "");
    tree.folder.Write("imag\xE9", "");  // no name in this tree
    fs::create_symlink("image.PNG", tree.folder / "image-link");
    EXPECT_TRUE(tree.directory->List("IMAG*", &listing));
    const struct {
        const char* name;
        std::uint8_t flags;
        std::uint64_t size;
    } rows[] = {{"image-link", 0x2E, 9}, {"image.PNG", 0x0E, 5}, {"images", 0x2F, 0}};
    ASSERT_EQ(listing.Size(), std::size(rows));
    auto entry = listing.begin();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(entry->name, String(row.name));
        EXPECT_EQ(entry->flags.bits, row.flags);
        EXPECT_EQ(entry->size, row.size);
        ElementTimes times;
        EXPECT_TRUE(tree.directory->GetChildTimes(row.name, &times));
        EXPECT_EQ(entry->times, times);
        ++entry;
    }
    fs::create_symlink("nowhere", tree.folder / "dangling");
    Listing links;
    EXPECT_TRUE(tree.directory->List("dangling", &links));
    EXPECT_EQ(links.begin()->flags.bits, 0);
    EXPECT_NE(links.begin()->times, ElementTimes());
    EXPECT_TRUE(tree.directory->List("none*", &listing)) << "it is not empty";

    const RefPointer<Directory> gone(tree.directory->CreateChildObject("missing"));
    EXPECT_TRUE(gone->IsEmpty());
    EXPECT_FALSE(gone->List("*", &listing));
    EXPECT_EQ(gone->GetFlags().bits, 0);
}

}  // namespace
}  // namespace ZEMA
