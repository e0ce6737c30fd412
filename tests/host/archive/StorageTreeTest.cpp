#include "host/archive/StorageTree.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

// "native | inner, kind", or the problem.
std::string Found(const TemporaryFolder& folder, const std::string& path) {
    constexpr const char* kKinds[] = {"missing", "file", "folder", "other"};
    StorageTree tree;
    const Result<StorageItem> item = tree.Find(folder / path);
    if (!item) return item.Why().text;
    std::string text = item->native.substr(folder.Path().string().size()) + (item->archive ? " |" : "");
    for (const String& name : item->inner) text += " " + std::string(name.ToAString().View());
    return text + ", " + (item->facts.isLink ? "link to " : "") + kKinds[static_cast<int>(item->facts.kind)];
}

}  // namespace

TEST(StorageTree, FindsWhereAnArchiveEnds) {
    const TemporaryFolder folder;
    const std::string inner = ArchiveBuilder().Stored("deep", "d").Bytes();
    folder.Write("x.png", ArchiveBuilder().Stored("Dir/a", "1").Stored("in", inner).Bytes());
    folder.Write("cut", inner.substr(0, inner.size() - 1));
    BuiltArchive damaged = ArchiveBuilder().Stored("a//b", "1").Build();
    folder.Write("damaged", damaged.bytes);
    folder.Write("empty", "");
    std::string folders;
    while (folders.size() < 65000) folders += "/a";
    ArchiveBuilder many;
    for (int member = 0; member < 31; ++member) many.Stored(std::to_string(member) + folders, "");
    folder.Write("many", many.Bytes());
    std::filesystem::create_directory(folder / "dir");
    std::filesystem::create_symlink("x.png", folder / "link");
    std::filesystem::create_symlink("gone", folder / "dangling");
    const struct {
        const char* path;
        const char* found;
    } rows[] = {
        {"x.png", "/x.png, file"},
        {"x.png/", "/x.png |, folder"},
        {"x.png/.", "/x.png |, folder"},
        {"x.png/dIR/A", "/x.png | dIR A, file"},
        {"x.png//Dir/../Dir/", "/x.png | Dir, folder"},
        {"x.png/new", "/x.png | new, missing"},
        {"x.png/new/deeper", "no such file"},
        {"x.png/Dir/a/b", "is no folder and no archive"},
        {"x.png/..", "'..' leads out of the archive"},
        {"x.png/in", "/x.png | in, file"},
        {"x.png/in/", "/x.png |, folder"},
        {"x.png/in/deep", "/x.png | deep, file"},
        {"link", "/link, link to file"},
        {"link/Dir", "/link | Dir, folder"},
        {"dir/../x.png/Dir", "/dir/../x.png | Dir, folder"},
        {"dir/", "/dir, folder"},
        {"dangling", "/dangling, link to missing"},
        {"new/", "/new, missing"},
        {"new/deeper", "no such file"},
        {"cut/deep", "it was cut short: its directory is missing"},
        {"damaged/a", "one of its members has a name with an empty part"},
        {"many/a", "its names make more files and folders than there is memory for"},
        {"empty/a", "is no folder and no archive"},
    };
    for (const auto& row : rows) EXPECT_EQ(Found(folder, row.path), row.found) << row.path;
}

// A command sees an archive as it was when it met it, also when it is replaced meanwhile.
TEST(StorageTree, KeepsAnArchiveAsItWas) {
    const TemporaryFolder folder;
    folder.Write("x", ArchiveBuilder().Stored("a", "old").Bytes());
    StorageTree tree;
    const Result<StorageItem> item = tree.Find(folder / "x/a");
    folder.Write("y", ArchiveBuilder().Stored("b", "new").Bytes());
    std::filesystem::rename(folder / "y", folder / "x");
    const Result<RefPointer<File>> file = OpenMemberFile(item->archive->Volume(), *item->node);
    char bytes[3];
    ASSERT_TRUE(file && ReadAt(**file, 0, 3, bytes));
    EXPECT_EQ(std::string(bytes, 3), "old");
    EXPECT_EQ(tree.Find(folder / "x/b")->facts.kind, StorageKind::File);
}

}  // namespace ZEMA::testing
