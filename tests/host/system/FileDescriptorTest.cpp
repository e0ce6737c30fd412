#include "host/system/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

// A pipe without a writer would be waited for without end.
TEST(FileDescriptor, OpensRegularFilesOnly) {
    const TemporaryFolder folder;
    folder.Write("file", "abc");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    std::filesystem::create_symlink("file", folder.Path() / "link");
    std::filesystem::create_symlink("pipe", folder.Path() / "linked pipe");
    const struct {
        std::string path;
        Failure failure;
    } rows[] = {
        {folder / "file", {}},
        {folder / "link", {}},
        {folder / "pipe", {FailureKind::WrongKind, "is a pipe, not a regular file"}},
        {folder / "linked pipe", {FailureKind::WrongKind, "is a pipe, not a regular file"}},
        {"/dev/null", {FailureKind::WrongKind, "is a device, not a regular file"}},
        {folder.Path().string(), {FailureKind::WrongKind, "is a folder"}},
        {folder / "missing", {FailureKind::Missing, "no such file", ENOENT}},
        {folder / "file/below", {FailureKind::System, "not a directory", ENOTDIR}},
        {folder / std::string(300, 'x'), {FailureKind::System, "file name too long", ENAMETOOLONG}},
        {"", {FailureKind::Missing, "no such file", ENOENT}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const Result<std::string> bytes = ReadRegularFile(row.path, 3);
        EXPECT_EQ(bytes ? *bytes : "none", row.failure ? "none" : "abc");
        EXPECT_EQ(bytes.Why().kind, row.failure.kind);
        EXPECT_EQ(bytes.Why().text, row.failure.text);
        EXPECT_EQ(bytes.Why().error, row.failure.error);
    }
    EXPECT_EQ(ReadRegularFile(folder / "file", 2).Why().text, "is too large");
}

TEST(FileDescriptor, MovesAllBytesOrFails) {
    const TemporaryFolder folder;
    const FileDescriptor from(open(folder.Write("from", "abcdef").c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor to(open(folder.Write("to", "......").c_str(), O_RDWR | O_CLOEXEC));
    const std::uint64_t done = CopyInSystem(from.Get(), 1, to.Get(), 2, 3);  // where the file system can do that
    EXPECT_EQ(folder.Read("to"), done == 0 ? "......" : "..bcd.");
    EXPECT_TRUE(WriteAllAt(to.Get(), 2, 3, "xyz"));
    char bytes[4];
    EXPECT_TRUE(ReadAllAt(to.Get(), 2, 4, bytes));
    EXPECT_EQ(std::string(bytes, 4), "xyz.");
    EXPECT_FALSE(ReadAllAt(to.Get(), 3, 4, bytes));
    EXPECT_EQ(errno, EIO) << "the file ends early";
    EXPECT_FALSE(WriteAllAt(from.Get(), 0, 1, "x"));
}

}  // namespace ZEMA::testing
