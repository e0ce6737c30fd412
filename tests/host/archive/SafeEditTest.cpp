#include "host/archive/SafeEdit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <filesystem>
#include <initializer_list>

#include "host/archive/StorageTree.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

BasicArray<String> Path(std::initializer_list<const char*> names) {
    BasicArray<String> path;
    for (const char* name : names) path.PushBack(String(name));
    return path;
}

class SafeEditTest : public ::testing::Test {
protected:
    std::unique_ptr<SafeEdit> Begin() {
        Result<std::unique_ptr<SafeEdit>> edit = SafeEdit::Begin(path_);
        return std::move(*edit);
    }

    std::string WhyNot() { return SafeEdit::Begin(path_).Why().text; }

    bool Write(SafeEdit& edit, std::initializer_list<const char*> path, const std::string& contents) {
        const Result<StorageItem> item = tree_.Find(folder_.Write("source", contents));
        const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(*item);
        return !edit.WriteFile(Path(path), **reader);
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    const TemporaryFolder folder_;
    const std::string before_ = ArchiveBuilder()
                                    .Stored("a", "first")
                                    .Stored("twin", "1")
                                    .Deflated("b/c", "deep")
                                    .Stored("twin", "2")
                                    .Stored("Twin", "3")
                                    .Bytes();
    const std::string path_ = folder_.Write("x", before_);
    StorageTree tree_;
};

}  // namespace

TEST_F(SafeEditTest, DoesAllOrNothing) {
    {
        const std::unique_ptr<SafeEdit> edit = Begin();
        ASSERT_TRUE(Write(*edit, {"b", "new"}, std::string(300000, 'n')));
        ASSERT_FALSE(edit->Remove(Path({"a"})));
        EXPECT_EQ(folder_.Read("x"), before_);
    }
    EXPECT_EQ(folder_.Read("x"), before_);
    EXPECT_EQ(Names().size(), 2u) << "the copy is still there";

    const std::unique_ptr<SafeEdit> edit = Begin();
    ASSERT_TRUE(Write(*edit, {"b", "new"}, std::string(300000, 'n')));
    ASSERT_TRUE(Write(*edit, {"b", "C"}, "changed"));
    ASSERT_FALSE(edit->AddFolder(Path({"d", "e"})));
    ASSERT_FALSE(edit->Remove(Path({"a"})));
    ASSERT_FALSE(edit->Remove(Path({"twin"}))) << "both members of the name, as it is spelled";
    ASSERT_FALSE(edit->Commit());
    const std::map<std::string, std::string> expected = {
        {"b/c", "changed"}, {"b/new", std::string(300000, 'n')}, {"d/", ""}, {"d/e/", ""}, {"Twin", "3"}};
    EXPECT_EQ(ReadStrictly(folder_.Read("x")), expected);
}

TEST_F(SafeEditTest, DoesNotReplaceWhatSomebodyElseChanged) {
    const struct {
        const char* what;
        void (*change)(const std::string& path);
    } rows[] = {
        {"bytes were written", [](const std::string& path) { fs::resize_file(path, fs::file_size(path)); }},
        {"another file took its place",
         [](const std::string& path) {
             fs::copy_file(path, path + "2");
             fs::rename(path + "2", path);
         }},
        {"it was removed", [](const std::string& path) { fs::remove(path); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder_.Write("x", before_);
        const std::unique_ptr<SafeEdit> edit = Begin();
        ASSERT_FALSE(edit->Remove(Path({"a"})));
        row.change(path_);
        EXPECT_EQ(edit->Commit().text, "somebody else has changed it meanwhile");
        if (fs::exists(path_)) {
            EXPECT_EQ(folder_.Read("x"), before_);
        }
    }
}

// The copy of a program that was killed is not locked any more.
TEST_F(SafeEditTest, RemovesLeftovers) {
    const FileDescriptor inUse(open(folder_.Write(".x.wqf-inUse1", "").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(inUse.Get(), LOCK_EX), 0);
    for (const char* name : {".x.wqf-dead01", ".y.wqf-other1", ".x.wqf-longer1"}) folder_.Write(name, "");
    Begin().reset();
    EXPECT_FALSE(fs::exists(folder_ / ".x.wqf-dead01"));
    EXPECT_EQ(Names().size(), 4u) << "one in use, two of others";
}

TEST_F(SafeEditTest, SaysWhyNothingCanBeEdited) {
    const struct {
        const char* what;
        std::string bytes;
        const char* problem;
    } rows[] = {
        {"no archive", "plain text that is longer than an end record", "the archive is damaged"},
        {"a cut archive", before_.substr(0, before_.size() - 1), "the archive is damaged"},
    };
    for (const auto& row : rows) {
        folder_.Write("x", row.bytes);
        EXPECT_EQ(WhyNot(), row.problem) << row.what;
    }
    EXPECT_EQ(SafeEdit::Begin(folder_ / "none").Why().kind, FailureKind::Missing);
    EXPECT_EQ(Names().size(), 1u);
}

// Members that lie in each other can be read, but not be moved apart.
TEST_F(SafeEditTest, GivesUpOnRecordsThatDoNotAllowIt) {
    BuiltArchive archive = ArchiveBuilder().Stored("a", "first").Stored("b", "second").Build();
    archive.Set32(archive.centralHeaders[0] + 20, 20).Set32(archive.centralHeaders[0] + 24, 20);
    archive.Set32(archive.localHeaders[0] + 18, 20).Set32(archive.localHeaders[0] + 22, 20);
    folder_.Write("x", archive.bytes);
    const std::unique_ptr<SafeEdit> edit = Begin();
    EXPECT_EQ(edit->Remove(Path({"a"})).text, "the archive's records do not allow changes");
    EXPECT_EQ(folder_.Read("x"), archive.bytes);
}

}  // namespace ZEMA::testing
