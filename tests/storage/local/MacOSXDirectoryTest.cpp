#include "storage/local/MacOSXDirectory.h"

#include <fcntl.h>

#include <filesystem>

#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

namespace fs = std::filesystem;

TEST(MacOSXDirectory, CreatesCutsAndRenames) {
    const LocalTree tree;
    const mode_t mask = umask(022);
    chmod(tree.folder.Write("locked", "text").c_str(), 0400);
    EXPECT_TRUE(tree.directory->CreateDirectory("folder"));
    EXPECT_FALSE(tree.directory->CreateDirectory("missing/folder"));
    EXPECT_FALSE(tree.OpenFile("new", kReadWriteStyle));
    EXPECT_TRUE(tree.OpenFile("new", kReadWriteStyle, true));
    EXPECT_FALSE(tree.OpenFile("folder", kReadWriteStyle, true));
    EXPECT_FALSE(tree.OpenFile("folder", kReadStyle));

    EXPECT_EQ(GetSize(*tree.OpenFile("locked", kReadStyle, true)), 4u) << "it opens: nothing to create";
    EXPECT_EQ(GetSize(*tree.OpenFile("locked", kReadWriteStyle, true)), 0u) << "it does not: a new file in its place";
    EXPECT_EQ(ModeOf(tree.folder / "locked"), 0644u);
    umask(mask);

    tree.folder.Write("new", "0123456789");
    const std::uint64_t size = 4;
    const RefPointer<File> file(tree.directory->OpenFile("new", &kReadWriteStyle, false, &size));
    EXPECT_EQ(GetPosition(*file), 0u);
    EXPECT_EQ(tree.directory->OpenFile("new", &kReadStyle, false, &size), nullptr);
    EXPECT_FALSE(tree.directory->Rename("new", "folder"));
    EXPECT_TRUE(tree.directory->Rename("new", "renamed"));
    EXPECT_EQ(tree.folder.Read("renamed"), "0123");
}

TEST(MacOSXDirectory, RemovesOnlyWhatNobodyHasOpen) {
    const LocalTree tree;
    fs::create_directories(tree.folder / "folder/below");
    fs::create_directory_symlink("folder", tree.folder / "link");
    tree.folder.Write("file", "");
    const RefPointer<Directory> below = tree.Open(tree.folder / "folder/below");
    RefPointer<File> first = tree.OpenFile("file", kReadStyle);
    RefPointer<File> second = tree.OpenFile("file", kReadStyle);
    first.Reset();
    EXPECT_FALSE(tree.directory->Remove("file", true)) << "one is left";
    second.Reset();
    EXPECT_TRUE(tree.directory->Remove("file", true));
    EXPECT_FALSE(tree.directory->Remove("file", false));
    EXPECT_FALSE(tree.directory->Remove("", true)) << "itself";
    EXPECT_TRUE(tree.directory->Remove("link", true));
    EXPECT_FALSE(tree.directory->Remove("folder", true)) << "open on the way to what is below";
    EXPECT_TRUE(fs::exists(tree.folder / "folder/below"));
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

// To the tree an empty folder and one that cannot be read differ in IsEmpty alone.
TEST(MacOSXDirectory, CopiesNoFolderThatItCannotRead) {
    const LocalTree tree;
    const OrdinaryUser user(tree.folder);
    fs::create_directories(tree.folder / "source/inner");
    EXPECT_TRUE(tree.directory->Copy("source", tree.directory.Get(), "copy", false, false));
    EXPECT_TRUE(fs::is_directory(tree.folder / "copy/inner"));
    chmod((tree.folder / "source/inner").c_str(), 0300);
    EXPECT_FALSE(tree.directory->Copy("source", tree.directory.Get(), "other", false, false));
}

// "folder" with a file and a folder in it, and links to both; what a row moves is still there where it was.
TEST(MacOSXDirectory, MovesNothingOntoOrIntoItselfThroughALink) {
    const struct {
        const char *what, *name, *target, *newName;
        const char* more = "";  // where a link in the folder leads
    } rows[] = {
        {"a file onto its link", "file", "", "file-link"},
        {"a file, by a link on the way", "file", "up", "file"},
        {"a folder onto its link", "folder", "", "folder-link"},
        {"a folder into itself", "folder", "folder-link", "new"},
        {"a folder below itself", "folder", "inner-link", "new"},
        {"a folder that leads back to itself", "folder", "", "new", "folder"},
        {"a folder that leads to the copy", "folder", "other", "new", "other"},
        {"a folder whose copy leads back", "folder", "", "partly"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LocalTree tree;
        for (const char* name : {"folder/inner", "other", "partly"}) fs::create_directories(tree.folder / name);
        tree.folder.Write("file", "text");
        tree.folder.Write("folder/inner/below", "text");
        const char* const links[][2] = {{"file", "file-link"},
                                        {".", "up"},
                                        {"folder", "folder-link"},
                                        {"folder/inner", "inner-link"},
                                        {"../folder", "partly/inner"}};
        for (const auto& [to, link] : links) fs::create_symlink(to, tree.folder / link);
        if (*row.more != 0) fs::create_symlink(std::string("../") + row.more, tree.folder / "folder/more");
        const RefPointer<Directory> target = OpenDirectory(*tree.directory, row.target, false);
        ASSERT_TRUE(target);
        EXPECT_FALSE(tree.directory->Move(row.name, target.Get(), row.newName, true, true));
        EXPECT_EQ(tree.folder.Read("file") + tree.folder.Read("folder/inner/below"), "texttext");
        EXPECT_FALSE(fs::exists(tree.folder / "folder/inner/new") || fs::exists(tree.folder / "other/new/more/new"));
    }
}

TEST(MacOSXDirectory, MovesNoFolderWhoseListingLeavesNamesOut) {
    for (const char* hidden : {"folder/inner/imag\xE9", "folder/inner/BELOW"}) {
        const LocalTree tree;
        fs::create_directories(tree.folder / "folder/inner");
        tree.folder.Write("folder/inner/below", "text");
        EXPECT_TRUE(tree.directory->Move("folder", tree.directory.Get(), "seen", false, false));
        EXPECT_TRUE(tree.directory->Move("seen", tree.directory.Get(), "folder", false, false));
        tree.folder.Write(hidden, "hidden");
        EXPECT_FALSE(tree.directory->Move("folder", tree.directory.Get(), "new", false, false));
        EXPECT_TRUE(tree.directory->Copy("folder", tree.directory.Get(), "new", false, false)) << "which loses nothing";
        EXPECT_EQ(tree.folder.Read(hidden), "hidden");
    }
}

TEST(MacOSXDirectory, TellsNamesInDifferentCaseApart) {
    const LocalTree tree;
    fs::create_directories(tree.folder / "folder/inner");
    tree.folder.Write("folder/inner/file", "text");
    tree.folder.Write("file", "text");
    if (fs::exists(tree.folder / "FILE")) GTEST_SKIP() << "the file system does not";
    EXPECT_TRUE(tree.directory->Move("file", tree.directory.Get(), "FILE", false, false));
    EXPECT_TRUE(tree.directory->Copy("folder", tree.directory.Get(), "Folder", false, false));
    EXPECT_TRUE(tree.directory->Move("folder", tree.directory.Get(), "FOLDER", false, false));
    for (const char* name : {"FILE", "Folder/inner/file", "FOLDER/inner/file"})
        EXPECT_EQ(tree.folder.Read(name), "text");
    EXPECT_FALSE(fs::exists(tree.folder / "file") || fs::exists(tree.folder / "folder"));
}

TEST(MacOSXDirectory, TakesALinkWithoutATargetForNothing) {
    const LocalTree tree;
    fs::create_symlink("nowhere", tree.folder / "link");
    ElementFlags flags{0xFF};
    EXPECT_FALSE(tree.directory->HasFile("link") || tree.OpenFile("link", kReadStyle));
    EXPECT_FALSE(tree.directory->GetChildFlags("link", &flags) || tree.directory->SetChildFlags("link", &flags));
    EXPECT_EQ(flags.bits, 0xFF);
    Listing listing;
    ASSERT_TRUE(tree.directory->List("*", &listing));
    EXPECT_EQ(listing.begin()->flags.bits, 0) << "it is listed all the same";
    EXPECT_NE(listing.begin()->times, ElementTimes());
    EXPECT_FALSE(tree.directory->Remove("link", true)) << "no flags to lift";
    EXPECT_TRUE(tree.directory->Remove("link", false));
    EXPECT_FALSE(fs::is_symlink(tree.folder / "link"));
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
    EXPECT_TRUE(tree.directory->List("none*", &listing)) << "it is not empty";

    const RefPointer<Directory> gone(tree.directory->CreateChildObject("missing"));
    EXPECT_TRUE(gone->IsEmpty());
    EXPECT_FALSE(gone->List("*", &listing));
    EXPECT_EQ(gone->GetFlags().bits, 0);
}

// As the targets of links give them. What is open must be found behind them too, or one place had two objects.
TEST(MacOSXDirectory, SkipsEmptyComponents) {
    const LocalTree tree;
    const RefPointer<Directory> made = OpenDirectory(*tree.directory, "new//below/", true);
    ASSERT_TRUE(made);
    EXPECT_TRUE(fs::is_directory(tree.folder / "new/below"));
    EXPECT_EQ(tree.Open("//" + (tree.folder / "new//below")), made);
    EXPECT_EQ(tree.Open("//" + tree.folder.Path().string() + "///"), tree.directory);
    tree.folder.Write("file", "");
    for (const char* path : {"new/file", "file", "file/x"})
        EXPECT_FALSE(DirectoryExists(*tree.directory, path)) << path;
}

}  // namespace
}  // namespace ZEMA
