#include "platform/Foundation/NSFileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/Foundation/NSPathUtilities.h"
#include "tests/platform/Foundation/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Foundation {
namespace {

namespace fs = std::filesystem;
using ZEMA::testing::TemporaryFolder;

constexpr std::uint32_t kGroupReads = 0640;

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
        bool exists;
        bool isDirectory;
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
        EXPECT_EQ(static_cast<bool>(Manager().destinationOfSymbolicLinkAtPath(fixture.At(row.name).get())),
                  row.type == NSFileTypeSymbolicLink);
        const auto attributes = Manager().attributesOfItemAtPath(fixture.At(row.name).get());
        ASSERT_EQ(attributes.has_value(), row.type.has_value());
        if (!attributes) continue;
        EXPECT_EQ(attributes->fileType, row.type);
        EXPECT_EQ(row.type == NSFileTypeDirectory ? 0 : attributes->fileSize, row.size);
    }
    EXPECT_FALSE(Manager().fileExistsAtPath(MakeText("").get()));
    EXPECT_FALSE(Manager().fileExistsAtPath(nullptr));
    EXPECT_EQ(Utf8(Manager().destinationOfSymbolicLinkAtPath(fixture.At("dangling").get())), "nowhere");
}

TEST(NSFileManager, SetsAttributesThroughLinks) {
    const Fixture fixture;
    NSFileAttributes changed;
    changed.filePosixPermissions = kGroupReads;
    changed.fileModificationDate = NSDate::dateWithTimespec({1'000'000'000, 123'456'000});
    changed.fileCreationDate = NSDate::dateWithTimespec({900'000'000, 0});
    ASSERT_TRUE(Manager().setAttributes(changed, fixture.At("link").get()));
    const struct stat status = StatusOf(fixture / "file");
    EXPECT_EQ(status.st_mode & 07777, kGroupReads);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'000);
    EXPECT_EQ(status.st_atim.tv_nsec, 123'456'000) << "the time of access goes along";
    const auto attributes = Manager().attributesOfItemAtPath(fixture.At("file").get());
    EXPECT_EQ(attributes->filePosixPermissions, kGroupReads);
    EXPECT_EQ(attributes->fileModificationDate->timeIntervalSince1970(), 1'000'000'000.123456);
    EXPECT_FALSE(Manager().setAttributes(changed, fixture.At("missing").get()));
    EXPECT_FALSE(Manager().setAttributes({}, fixture.At("dangling").get()));
}

TEST(NSFileManager, CreatesAFileInThePlaceOfAnother) {
    const Fixture fixture;
    const mode_t mask = umask(022);
    fs::create_hard_link(fixture / "file", fixture / "second-name");
    chmod((fixture / "file").c_str(), 0);
    const struct {
        const char* name;
        bool created;
    } rows[] = {
        {"new", true},     {"file", true},  {"link", true},       {"dangling", true},
        {"folder", false}, {"pipe", false}, {"missing/x", false}, {"link-to-folder", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Manager().createFileAtPath(fixture.At(row.name).get()), row.created);
        if (!row.created) continue;
        const struct stat status = StatusOf(fixture / row.name);
        EXPECT_EQ(status.st_mode, S_IFREG | 0644u);
        EXPECT_EQ(status.st_size, 0);
    }
    umask(mask);
    EXPECT_EQ(StatusOf(fixture / "second-name").st_size, 4) << "the old file keeps its text under its other name";
    EXPECT_TRUE(fs::is_fifo(fixture / "pipe"));
    EXPECT_EQ(NamesIn(Manager().contentsOfDirectoryAtPath(MakeText(fixture.Path().string()).get())).size(), 9u)
        << "nothing is left beside the files";
}

TEST(NSFileManager, CreatesADirectoryWhereNothingIs) {
    const Fixture fixture;
    EXPECT_TRUE(Manager().createDirectoryAtPath(fixture.At("new").get()));
    for (const char* name : {"new", "file", "dangling", "missing/x"}) {
        EXPECT_FALSE(Manager().createDirectoryAtPath(fixture.At(name).get())) << name;
    }
}

TEST(NSFileManager, RemovesTreesButNoTargets) {
    const Fixture fixture;
    fs::create_symlink(fixture / "empty", fixture / "folder/out");
    EXPECT_TRUE(Manager().removeItemAtPath(fixture.At("link-to-folder").get()));
    EXPECT_TRUE(fs::exists(fixture / "folder/inside"));
    for (const char* name : {"dangling", "file", "folder", "pipe"}) {
        EXPECT_TRUE(Manager().removeItemAtPath(fixture.At(name).get())) << name;
        EXPECT_FALSE(Manager().removeItemAtPath(fixture.At(name).get())) << name;
    }
    EXPECT_TRUE(fs::exists(fixture / "empty"));
}

TEST(NSFileManager, MovesToFreeNamesOnly) {
    const struct {
        const char* from;
        const char* to;
        bool moved;
    } rows[] = {
        {"file", "new", true},         {"folder", "new", true},     {"link", "new", true},
        {"file", "pipe", false},       {"file", "empty", false},    {"file", "dangling", false},
        {"file", "file", false},       {"missing", "new", false},   {"file", "missing/new", false},
        {"folder", "folder/x", false}, {"empty", "folder/x", true},
    };
    for (const auto& row : rows) {
        const Fixture fixture;
        SCOPED_TRACE(std::string(row.from) + " to " + row.to);
        const bool isThere = fs::exists(fs::symlink_status(fixture / row.from));
        EXPECT_EQ(Manager().moveItemAtPath(fixture.At(row.from).get(), fixture.At(row.to).get()), row.moved);
        EXPECT_EQ(fs::exists(fs::symlink_status(fixture / row.from)), isThere && !row.moved);
    }
}

TEST(NSFileManager, ListsTheNamesThatCanBeNamed) {
    const TemporaryFolder folder;
    const auto contents = [&](const std::string& path) {
        return Manager().contentsOfDirectoryAtPath(MakeText(path).get());
    };
    EXPECT_EQ(NamesIn(contents(folder.Path().string())).size(), 0u) << "empty, not null";
    const std::set<std::string> names = {".hidden", "\xEF\xBB\xBFmarked", "caf\xC3\xA9"};
    for (const std::string& name : names) folder.Write(name, "");
    folder.Write("caf\xE9", "");
    EXPECT_EQ(NamesIn(contents(folder.Path().string())), names);
    fs::create_symlink(".", folder / ".link");
    EXPECT_EQ(NamesIn(contents(folder / ".link")).size(), 4u);
    EXPECT_FALSE(contents(folder / ".hidden"));
    EXPECT_FALSE(contents(folder / "missing"));
}

TEST(NSFileManager, WalksDepthFirstAndEntersNoLink) {
    const Fixture fixture;
    fixture.Write("folder/below/deep", "12345");
    fs::create_directory(fixture / "folder/caf\xE9");
    fixture.Write("folder/caf\xE9/unnamed", "");
    fs::create_symlink(fixture / "empty", fixture / "folder/out");
    NSDirectoryEnumerator items = Manager().enumeratorAtPath(fixture.At("folder").get());
    std::vector<std::string> order;
    std::map<std::string, NSFileAttributes> attributes;
    for (StringPointer item = items.nextObject(); item; item = items.nextObject()) {
        order.push_back(Utf8(item));
        attributes[order.back()] = items.fileAttributes().value();
    }
    EXPECT_EQ(attributes.size(), 4u);
    EXPECT_EQ(attributes["below/deep"].fileSize, 5u);
    EXPECT_EQ(attributes["out"].fileType, NSFileTypeSymbolicLink);
    EXPECT_LT(std::find(order.begin(), order.end(), "below"), std::find(order.begin(), order.end(), "below/deep"));
    EXPECT_FALSE(items.nextObject());
    for (const char* name : {"empty", "file", "missing", "link-to-folder"}) {
        EXPECT_FALSE(Manager().enumeratorAtPath(fixture.At(name).get()).nextObject()) << name;
    }
}

}  // namespace
}  // namespace Foundation
