#include "platform/Foundation/NSFileHandle.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <thread>

#include "platform/Foundation/Uninterrupted.h"
#include "tests/platform/Foundation/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Foundation {
namespace {

namespace fs = std::filesystem;
using ZEMA::testing::TemporaryFolder;
using Handle = std::unique_ptr<NSFileHandle>;

constexpr auto Reading = &NSFileHandle::fileHandleForReadingAtPath;
constexpr auto Writing = &NSFileHandle::fileHandleForWritingAtPath;
constexpr auto Updating = &NSFileHandle::fileHandleForUpdatingAtPath;

std::string ReadText(NSFileHandle& handle, std::uint64_t length) {
    const NSData data = handle.readDataOfLength(length);
    return std::string(data.begin(), data.end());
}

bool Raises(const std::function<void()>& operation) {
    try {
        operation();
        return false;
    } catch (const NSException& exception) {
        return exception.name() == std::string(NSFileHandleOperationException);
    }
}

TEST(NSFileHandle, OpensRegularFilesOnlyAndWaitsForNoOther) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    fs::create_symlink("folder", folder / "link-to-folder");
    fs::create_symlink("pipe", folder / "link-to-pipe");
    fs::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    for (const char* name : {"folder", "link-to-folder", "pipe", "link-to-pipe", "dangling", "missing", ""}) {
        SCOPED_TRACE(name);
        const Text path = MakeText(*name == '\0' ? "" : folder / name);
        for (const auto open : {Reading, Writing, Updating}) EXPECT_EQ(open(path.get()), nullptr);
    }
    EXPECT_EQ(Reading(CFSTR("/dev/null")), nullptr);
    EXPECT_FALSE(fs::exists(folder / "nowhere")) << "opening makes nothing";

    fs::create_symlink(folder.Write("file", "text"), folder / "link");
    Handle handle = Reading(MakeText(folder / "link").get());
    ASSERT_NE(handle, nullptr);
    const int descriptor = handle->fileDescriptor();
    EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    handle.reset();
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1) << "closed with its handle";
}

#ifdef __linux__
TEST(NSFileHandle, WaitsUntilALeaseIsGivenBack) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("file", "text");
    std::signal(SIGIO, SIG_IGN);  // sent to whoever has the lease
    const int holder = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fcntl(holder, F_SETLEASE, F_WRLCK) != 0) GTEST_SKIP() << "no leases here";
    std::thread givesBack([&] {
        while (fcntl(holder, F_GETLEASE) == F_WRLCK) usleep(1000);
        EXPECT_EQ(fcntl(holder, F_SETLEASE, F_UNLCK), 0);
    });
    EXPECT_NE(Reading(MakeText(path).get()), nullptr);
    givesBack.join();
    close(holder);
}
#endif

TEST(NSFileHandle, ReachesBehindTheEndAndBeyond32Bits) {
    constexpr std::uint64_t kFar = 5ull << 30;
    const TemporaryFolder folder;
    const Handle handle = Updating(MakeText(folder.Write("file", "0123456789")).get());
    EXPECT_EQ(ReadText(*handle, 4), "0123");
    EXPECT_EQ(ReadText(*handle, 1ull << 40), "456789") << "what is there, not what was asked for";
    handle->seekToFileOffset(kFar);
    handle->writeData("far", 3);
    EXPECT_EQ(handle->offsetInFile(), kFar + 3);
    EXPECT_EQ(fs::file_size(folder / "file"), kFar + 3);
    handle->truncateFileAtOffset(3);
    EXPECT_EQ(handle->offsetInFile(), 3u);
}

TEST(NSFileHandle, TellsWhatItReadBeforeItRaised) {
    const TemporaryFolder folder;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<char*>(memory) + page, page, PROT_NONE), 0);  // where nothing can be put
    const Handle handle = Reading(MakeText(folder.Write("file", std::string(2 * page, 'x'))).get());
    std::uint64_t done = 77;
    EXPECT_TRUE(Raises([&] { handle->readBytes(memory, 2 * page, &done); }));
    EXPECT_EQ(done, page);
    munmap(memory, 2 * page);
}

TEST(NSFileHandle, RaisesWhatTheSystemRefuses) {
    const TemporaryFolder folder;
    const Text path = MakeText(folder.Write("file", "text"));
    const Handle reading = Reading(path.get());
    const Handle writing = Writing(path.get());
    const Handle closed = Updating(path.get());
    const int descriptor = closed->fileDescriptor();
    closed->closeFile();
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    EXPECT_EQ(closed->fileDescriptor(), -1);
    EXPECT_TRUE(Raises([&] { reading->writeData("x", 1); }));
    EXPECT_TRUE(Raises([&] { reading->truncateFileAtOffset(0); }));
    EXPECT_TRUE(Raises([&] { writing->readDataOfLength(1); }));
    EXPECT_TRUE(Raises([&] { reading->seekToFileOffset(1ull << 63); })) << "an offset that no file can have";
    EXPECT_TRUE(Raises([&] { closed->readDataOfLength(0); }));
    EXPECT_TRUE(Raises([&] { closed->readBytes(nullptr, 0); }));
    EXPECT_TRUE(Raises([&] { closed->writeData(nullptr, 0); }));
    EXPECT_TRUE(Raises([&] { (void)closed->offsetInFile(); }));
    EXPECT_TRUE(Raises([&] { closed->closeFile(); }));
    EXPECT_EQ(folder.Read("file"), "text");
}

TEST(Uninterrupted, GoesOnAfterEverySignal) {
    int calls = 0;
    const auto interrupted = [&] {
        errno = EINTR;
        return ++calls < 4 ? -1 : calls;
    };
    EXPECT_EQ(Uninterrupted(interrupted), 4);
}

}  // namespace
}  // namespace Foundation
