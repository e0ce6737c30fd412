#include "host/system/FileReading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

// A pipe without a writer would be waited for without end.
TEST(FileReading, OpensRegularFilesOnly) {
    const TemporaryFolder folder;
    folder.Write("file", "abc");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    std::filesystem::create_symlink("file", folder.Path() / "link");
    std::filesystem::create_symlink("pipe", folder.Path() / "linked pipe");
    const struct {
        std::string path;
        const char* problem;
    } rows[] = {
        {folder / "file", ""},
        {folder / "link", ""},
        {folder / "pipe", "is a pipe, not a regular file"},
        {folder / "linked pipe", "is a pipe, not a regular file"},
        {"/dev/null", "is a device, not a regular file"},
        {folder.Path().string(), "is a folder"},
        {folder / "missing", "No such file or directory"},
        {folder / "file/below", "Not a directory"},
        {folder / std::string(300, 'x'), "File name too long"},
        {"", "No such file or directory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(WhyUnreadable(row.path), row.problem);
        std::string problem;
        EXPECT_EQ(ReadRegularFile(row.path, 3, problem).value_or("none"), *row.problem == '\0' ? "abc" : "none");
        EXPECT_EQ(problem, row.problem);
    }
    std::string problem;
    EXPECT_FALSE(ReadRegularFile(folder / "file", 2, problem));
    EXPECT_EQ(problem, "is too large");
}

}  // namespace ZEMA::testing
