#include "platform/Foundation/NSFileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "platform/Foundation/NSPathUtilities.h"
#include "tests/platform/Foundation/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Foundation {
namespace {

namespace fs = std::filesystem;
using ZEMA::testing::TemporaryFolder;

NSFileManager& Manager() {
    return NSFileManager::defaultManager();
}

struct stat StatusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

// A folder with one of each: files, folders, links, a pipe.
struct Fixture : TemporaryFolder {
    Fixture() {
        Write("file", "four");
        fs::create_directories(*this / "folder/below");
        Write("folder/inside", "");
        fs::create_directory(*this / "empty");
        fs::create_symlink("file", *this / "link");
        fs::create_symlink("folder", *this / "link-to-folder");
        fs::create_symlink("nowhere", *this / "dangling");
        mkfifo((*this / "pipe").c_str(), 0600);
    }
    Text At(const std::string& name) const { return MakeText(*this / name); }
};

CFPointer<CFArrayRef> Contents(const std::string& path) {
    return Manager().contentsOfDirectoryAtPath(MakeText(path).get());
}

std::set<std::string> NamesIn(const CFPointer<CFArrayRef>& array) {
    std::set<std::string> names;
    for (CFIndex index = 0; index < CFArrayGetCount(array.Get()); ++index) {
        names.insert(*FileSystemRepresentation(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array.Get(), index))));
    }
    return names;
}

TEST(NSFileManager, TellsWhatIsThere) {
    const Fixture fixture;
    const struct {
        const char* name;
        bool exists, isDirectory;
        std::optional<NSFileType> type;
        std::uint64_t size;  // where the system does not choose it
    } rows[] = {
        {"file", true, false, NSFileTypeRegular, 4},
        {"folder", true, true, NSFileTypeDirectory, 0},
        {"link", true, false, NSFileTypeSymbolicLink, 4},
        {"link-to-folder", true, true, NSFileTypeSymbolicLink, 6},
        {"dangling", false, false, NSFileTypeSymbolicLink, 7},
        {"pipe", true, false, NSFileTypeUnknown, 0},
        {"missing", false, false, {}, 0},
        {"file/below", false, false, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        bool isDirectory = false;
        EXPECT_EQ(Manager().fileExistsAtPath(fixture.At(row.name).get(), &isDirectory), row.exists);
        EXPECT_EQ(isDirectory, row.isDirectory);
        const auto attributes = Manager().attributesOfItemAtPath(fixture.At(row.name).get());
        ASSERT_EQ(attributes.has_value(), row.type.has_value());
        if (!attributes) continue;
        EXPECT_EQ(attributes->fileType, row.type);
        EXPECT_EQ(row.type == NSFileTypeDirectory ? 0 : attributes->fileSize, row.size);
    }
    EXPECT_FALSE(Manager().fileExistsAtPath(nullptr));
}

TEST(NSFileManager, SetsAttributesThroughLinks) {
    const Fixture fixture;
    NSFileAttributes changed;
    changed.filePosixPermissions = 0640u;
    changed.fileModificationDate = NSDate::dateWithTimespec({1'000'000'000, 123'456'000});
    changed.fileCreationDate = NSDate::dateWithTimespec({900'000'000, 0});
    ASSERT_TRUE(Manager().setAttributes(changed, fixture.At("link").get()));
    const struct stat status = StatusOf(fixture / "file");
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'000);
    EXPECT_EQ(status.st_atim.tv_nsec, 123'456'000) << "the time of access goes along";
    EXPECT_FALSE(Manager().setAttributes(changed, fixture.At("missing").get()));
    EXPECT_FALSE(Manager().setAttributes({}, fixture.At("dangling").get()));
}

TEST(NSFileManager, CreatesAFileInThePlaceOfAnother) {
    const Fixture fixture;
    const mode_t mask = umask(022);
    fs::create_hard_link(fixture / "file", fixture / "second-name");
    fixture.Write(".new-" + std::to_string(getpid()) + "-0", "left by somebody who had this number");
    chmod((fixture / "file").c_str(), 0);
    const std::pair<const char*, bool> rows[] = {
        {"new", true},     {"file", true},  {"link", true},       {"dangling", true},
        {"folder", false}, {"pipe", false}, {"missing/x", false}, {"link-to-folder", false},
    };
    for (const auto& [name, created] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Manager().createFileAtPath(fixture.At(name).get()), created);
        if (!created) continue;
        const struct stat status = StatusOf(fixture / name);
        EXPECT_EQ(status.st_mode, S_IFREG | 0644u);
        EXPECT_EQ(status.st_size, 0);
    }
    umask(mask);
    EXPECT_EQ(StatusOf(fixture / "second-name").st_size, 4) << "the old file keeps its text under its other name";
    EXPECT_TRUE(fs::is_fifo(fixture / "pipe"));
    EXPECT_EQ(NamesIn(Contents(fixture.Path())).size(), 10u) << "nothing is left beside the files";
}

TEST(NSFileManager, RemovesTreesButNoTargets) {
    const Fixture fixture;
    fs::create_symlink(fixture / "empty", fixture / "folder/out");
    for (const char* name : {"link", "link-to-folder", "dangling", "folder", "pipe"}) {
        EXPECT_TRUE(Manager().removeItemAtPath(fixture.At(name).get())) << name;
        EXPECT_FALSE(Manager().removeItemAtPath(fixture.At(name).get())) << name;
    }
    EXPECT_EQ(NamesIn(Contents(fixture.Path())), (std::set<std::string>{"empty", "file"}));
}

TEST(NSFileManager, MovesToFreeNamesOnly) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"folder", "new", true},        {"dangling", "new", true},     {"file", "pipe", false},
        {"empty", "folder", false},     {"file", "dangling", false},   {"file", "file", false},
        {"file", "missing/new", false}, {"folder", "folder/x", false},
    };
    for (const auto& [from, to, moved] : rows) {
        const Fixture fixture;
        EXPECT_EQ(Manager().moveItemAtPath(fixture.At(from).get(), fixture.At(to).get()), moved)
            << from << " to " << to;
        EXPECT_NE(fs::exists(fs::symlink_status(fixture / from)), moved) << from << " to " << to;
    }
}

TEST(NSFileManager, ListsTheNamesThatCanBeNamed) {
    const TemporaryFolder folder;
    EXPECT_EQ(NamesIn(Contents(folder.Path())).size(), 0u) << "empty, not null";
    const std::set<std::string> names = {".hidden", "\xEF\xBB\xBFmarked", "caf\xC3\xA9"};
    for (const std::string& name : names) folder.Write(name, "");
    folder.Write("caf\xE9", "");
    EXPECT_EQ(NamesIn(Contents(folder.Path())), names);
    fs::create_symlink(".", folder / ".link");
    EXPECT_EQ(NamesIn(Contents(folder / ".link")).size(), 4u);
    EXPECT_FALSE(Contents(folder / ".hidden"));
    EXPECT_FALSE(Contents(folder / "missing"));
}

TEST(NSFileManager, WalksDepthFirstAndEntersNoLink) {
    const Fixture fixture;
    fixture.Write("folder/below/deep", "12345");
    fs::create_directory(fixture / "folder/caf\xE9");
    fixture.Write("folder/caf\xE9/unnamed", "");
    fs::create_symlink(fixture / "empty", fixture / "folder/out");
    NSDirectoryEnumerator items = Manager().enumeratorAtPath(fixture.At("folder").get());
    std::map<std::string, std::size_t> order;
    for (StringPointer item = items.nextObject(); item; item = items.nextObject()) {
        order.insert({Utf8(item), order.size()});
        EXPECT_EQ(items.fileAttributes()->fileType == NSFileTypeSymbolicLink, Utf8(item) == "out");
    }
    EXPECT_EQ(order.size(), 4u);
    EXPECT_LT(order.at("below"), order.at("below/deep"));
    for (const char* name : {"empty", "file", "missing", "link-to-folder"}) {
        EXPECT_FALSE(Manager().enumeratorAtPath(fixture.At(name).get()).nextObject()) << name;
    }
}

}  // namespace
}  // namespace Foundation
