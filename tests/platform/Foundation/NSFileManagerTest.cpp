#include "platform/Foundation/NSFileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <sstream>
#include <string>
#include <utility>

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
        Write("folder/.inside", "");
        Write("folder/caf\xE9", "");  // no name of the platform
        for (const char* name : {"empty", "behind"}) fs::create_directory(*this / name);
        fs::create_symlink(*this / "behind", *this / "folder/out");
        fs::create_symlink("file", *this / "link");
        fs::create_symlink("folder", *this / "link-to-folder");
        fs::create_symlink("nowhere", *this / "dangling");
        mkfifo((*this / "pipe").c_str(), 0600);
    }
    Text At(const std::string& name) const { return MakeText(*this / name); }
    bool Move(const std::string& from, const std::string& to) const {
        return Manager().moveItemAtPath(At(from).get(), At(to).get());
    }
};

// The names in a folder, in order; "none" where they cannot be told.
std::string NamesIn(const Text& path) {
    const CFPointer<CFArrayRef> array = Manager().contentsOfDirectoryAtPath(path.get());
    if (!array) return "none";
    std::set<std::string> names;
    for (CFIndex index = 0; index < CFArrayGetCount(array.Get()); ++index) {
        names.insert(Utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array.Get(), index))));
    }
    std::string joined;
    for (const std::string& name : names) joined += name + ",";
    return joined;
}

// What is told of an item, what a walk through it finds, and which of the changes can be made, each in a new fixture.
std::string AnswersFor(const char* name) {
    const Fixture fixture;
    const Text path = fixture.At(name);
    std::ostringstream answers;
    bool isDirectory = false;
    answers << (Manager().fileExistsAtPath(path.get(), &isDirectory) ? isDirectory ? "folder" : "item" : "nothing");
    if (const auto attributes = Manager().attributesOfItemAtPath(path.get())) {
        answers << " of type " << static_cast<int>(*attributes->fileType);
        if (attributes->fileType != NSFileTypeDirectory) answers << ", " << *attributes->fileSize << " bytes";
    }
    answers << "; " << NamesIn(path) << " ";
    NSDirectoryEnumerator items = Manager().enumeratorAtPath(path.get());
    int links = 0, others = 0;
    while (items.nextObject()) ++(items.fileAttributes()->fileType == NSFileTypeSymbolicLink ? links : others);
    answers << links << "+" << others << ";";
    const Fixture forCreation, forMove;
    if (Manager().createFileAtPath(forCreation.At(name).get())) {
        const struct stat status = StatusOf(forCreation / name);
        EXPECT_EQ(status.st_mode, S_IFREG | 0644u);
        EXPECT_EQ(status.st_size, 0);
        answers << " created";
    }
    if (forMove.Move(name, "new")) answers << " moved";
    if (Manager().removeItemAtPath(path.get())) answers << " removed";
    EXPECT_FALSE(Manager().removeItemAtPath(path.get()));
    EXPECT_TRUE(fs::exists(fixture / "behind")) << "what a link in the folder leads to";
    EXPECT_EQ(NamesIn(forCreation.At("")).find(".new"), std::string::npos) << "nothing is left beside the file";
    return answers.str();
}

TEST(NSFileManager, AnswersForEachKindOfItem) {
    const mode_t mask = umask(022);
    const std::pair<const char*, const char*> rows[] = {
        {"file", "item of type 0, 4 bytes; none 0+0; created moved removed"},
        {"folder", "folder of type 1; .inside,below,out, 1+2; moved removed"},
        {"empty", "folder of type 1;  0+0; moved removed"},
        {"link", "item of type 2, 4 bytes; none 0+0; created moved removed"},
        {"link-to-folder", "folder of type 2, 6 bytes; .inside,below,out, 0+0; moved removed"},
        {"dangling", "nothing of type 2, 7 bytes; none 0+0; created moved removed"},
        {"pipe", "item of type 6, 0 bytes; none 0+0; moved removed"},
        {"missing", "nothing; none 0+0; created"},
        {"missing/x", "nothing; none 0+0;"},
        {"file/below", "nothing; none 0+0;"},
    };
    for (const auto& [name, answers] : rows) EXPECT_EQ(AnswersFor(name), answers) << name;
    EXPECT_FALSE(Manager().fileExistsAtPath(nullptr));
    umask(mask);
}

TEST(NSFileManager, CreatesAFileInThePlaceOfAnother) {
    const Fixture fixture;
    fs::create_hard_link(fixture / "file", fixture / "second-name");
    fixture.Write(".new-" + std::to_string(getpid()) + "-0", "left by somebody who had this number");
    chmod((fixture / "file").c_str(), 0);
    EXPECT_TRUE(Manager().createFileAtPath(fixture.At("file").get()));
    EXPECT_EQ(StatusOf(fixture / "file").st_size, 0);
    EXPECT_EQ(StatusOf(fixture / "second-name").st_size, 4) << "the old file keeps its text under its other name";
}

TEST(NSFileManager, MovesToFreeNamesOnly) {
    const Fixture fixture;
    for (const auto& [from, to] : {std::pair("file", "pipe"),
                                   {"empty", "folder"},
                                   {"file", "dangling"},
                                   {"file", "file"},
                                   {"file", "missing/new"},
                                   {"folder", "folder/x"}}) {
        EXPECT_FALSE(fixture.Move(from, to)) << from << " to " << to;
        EXPECT_TRUE(fs::exists(fixture / from)) << from << " to " << to;
    }
}

}  // namespace
}  // namespace Foundation
