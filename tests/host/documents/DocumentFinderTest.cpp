#include "host/documents/DocumentFinder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

// What is found, with the folder's name taken away in front, and "path: problem" where there is one.
Lines Found(const TemporaryFolder& folder, const std::string& path) {
    std::vector<FoundDocument> documents;
    FindDocuments(path, documents);
    Lines lines;
    for (const FoundDocument& document : documents) {
        const std::string root = folder.Path().string();
        const std::string name = document.path.starts_with(root) ? document.path.substr(root.size()) : document.path;
        lines.push_back(name + (document.failure ? ": " + document.failure.text : ""));
    }
    return lines;
}

}  // namespace

TEST(DocumentFinder, SearchesFoldersInTheOrderOfBytes) {
    const TemporaryFolder folder;
    for (const char* name : {"b", "a", ".hidden", "empty", "a.wqf", "notes"})
        fs::create_directory(folder.Path() / name);
    for (const char* name : {"b/2.wqf", "b.wqf", "b-1.WQF", "a/x.wqfml", "a/y.WqfML", "a/z.wqfm", "a.wqf/in",
                             ".hidden/.wqf", "notes/wqf", "\xE9.wqf"}) {
        folder.Write(name, "x");
    }
    fs::create_symlink("../b.wqf", folder.Path() / "a/link.wqf");
    fs::create_symlink("../notes/wqf", folder.Path() / "a/other.wqf");
    fs::create_symlink("nowhere", folder.Path() / "a/dangling.wqf");
    fs::create_directory_symlink("..", folder.Path() / "a/loop");
    fs::create_directory_symlink("../b", folder.Path() / "a/linked.wqf");
    ASSERT_EQ(mkfifo((folder / "pipe.wqf").c_str(), 0666), 0);

    EXPECT_EQ(Found(folder, folder.Path().string()),
              (Lines{"/.hidden/.wqf", "/a/link.wqf", "/a/other.wqf", "/a/x.wqfml", "/a/y.WqfML", "/b-1.WQF", "/b.wqf",
                     "/b/2.wqf", "/\xE9.wqf"}));
    EXPECT_EQ(Found(folder, folder / "b/"), (Lines{"/b/2.wqf"}));
    EXPECT_EQ(Found(folder, folder / "a/linked.wqf"), (Lines{"/a/linked.wqf/2.wqf"}));  // a link that was named

    std::vector<FoundDocument> none;
    EXPECT_FALSE(FindDocuments(folder / "empty", none));
    EXPECT_FALSE(FindDocuments(folder / "a.wqf", none));
    EXPECT_TRUE(none.empty());
}

TEST(DocumentFinder, ShowsAFolderThatItMayNotRead) {
    const TemporaryFolder folder;
    fs::create_directory(folder.Path() / "locked");
    folder.Write("locked/a.wqf", "x");
    folder.Write("z.wqf", "x");
    fs::permissions(folder.Path() / "locked", fs::perms::none);
    fs::permissions(folder.Path(), fs::perms(0755));
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);  // nothing is forbidden to root
    const Lines found = Found(folder, folder.Path().string());
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(found, (Lines{"/locked: permission denied", "/z.wqf"}));
}

TEST(DocumentFinder, ReadsListsOfPaths) {
    const TemporaryFolder folder;
    const struct {
        std::string bytes;
        Lines paths;
    } rows[] = {
        {"", {}},
        {std::string("a\nb\0c", 5), {"a\nb", "c"}},
        {std::string("a\0\0", 3), {"a", ""}},
    };
    for (const auto& row : rows) EXPECT_EQ(*ReadPathList(folder.Write("list", row.bytes)), row.paths);
    EXPECT_EQ(ReadPathList(folder / "none").Why().kind, FailureKind::Missing);
}

}  // namespace ZEMA::testing
