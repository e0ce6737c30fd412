#include "host/system/Paths.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

TEST(Paths, TakesPathsApart) {
    const struct {
        const char* path;
        const char* folder;
        const char* name;
    } rows[] = {{"a", ".", "a"}, {"/a", "/", "a"}, {"a/b.c", "a", "b.c"}, {"/a//b", "/a/", "b"}, {"a/", "a", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(FolderOf(row.path), row.folder) << row.path;
        EXPECT_EQ(NameOf(row.path), row.name) << row.path;
    }
}

TEST(Paths, TellsWhatLeadsIntoAFile) {
    const TemporaryFolder folder;
    folder.Write("file", "");
    std::filesystem::create_symlink("file", folder.Path() / "link");
    for (const char* path : {"file/a", "link/a", "file/a/b/c"}) EXPECT_TRUE(LeadsIntoFile(folder / path)) << path;
    for (const char* path : {"file", "none", "none/a", "none/../file"})
        EXPECT_FALSE(LeadsIntoFile(folder / path)) << path;
}

}  // namespace ZEMA::testing
