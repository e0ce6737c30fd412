#include "importer/DocumentLoad.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/importer/Attributes.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

std::string StoragePath(const std::string& path) {
    return std::string(StoragePathOf(PathString(path).Get()).ToAString().View());
}

}  // namespace

TEST(StoragePath, PutsTheVolumeInPlaceOfTheRoot) {
    const struct {
        const char* path;
        const char* storagePath;
    } rows[] = {
        {"/folder/a.wqf", "file/folder/a.wqf"},
        {"//folder/./a.wqf/", "file/folder/a.wqf"},
        {"/no/such/../a.wqf", "file/no/a.wqf"},
        {"/Größe.wqf", "file/Größe.wqf"},
        {"/", "file"},
    };
    for (const auto& row : rows) EXPECT_EQ(StoragePath(row.path), row.storagePath);
}

TEST(StoragePath, StartsARelativePathAtTheCurrentFolder) {
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    const std::string path = StoragePath("sub/a.wqf");
    const std::string ofNothing = StoragePath("");
    fs::current_path(before);
    EXPECT_EQ(path, "file" + (folder / "sub/a.wqf"));
    EXPECT_EQ(ofNothing, "file" + folder.Path().string());
}

TEST(StoragePath, FollowsALinkOnce) {
    const TemporaryFolder folder;
    const std::string root = folder.Path().string();
    fs::create_directories(root + "/real/deep");
    folder.Write("real/a.wqf", "x");
    fs::create_directory_symlink("real/deep", root + "/short");
    const struct {
        const char* what;
        const char* link;
        std::string destination;
        std::string storagePath;
    } rows[] = {
        {"an absolute destination", "absolute.wqf", root + "/real/a.wqf", "file//" + root + "/real/a.wqf"},
        {"a relative one starts at the link's folder", "relative.wqf", "real/a.wqf", "file//" + root + "/real/a.wqf"},
        {"and climbs from where that folder really is", "short/up.wqf", "../a.wqf", "file//" + root + "/real/a.wqf"},
        {"a link to a link stops there", "second.wqf", "relative.wqf", "file//" + root + "/relative.wqf"},
        {"a destination is never a home folder", "home.wqf", "~/a.wqf", "file//" + root + "/~/a.wqf"},
        {"one that leads nowhere", "dangling.wqf", "gone.wqf", "file//" + root + "/gone.wqf"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fs::create_symlink(row.destination, folder.Path() / row.link);
        EXPECT_EQ(StoragePath(folder / row.link), row.storagePath);
    }
}

}  // namespace ZEMA::testing
