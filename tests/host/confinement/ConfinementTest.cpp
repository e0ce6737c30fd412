// From inside of a confined process.
#include "host/confinement/Confinement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/system/FileDescriptor.h"
#include "host/system/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

// What a process of its own returns.
template <class Check>
int Apart(Check check) {
    const pid_t process = fork();
    if (process == 0) _exit(check());
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 200 + WTERMSIG(status);
}

template <class Check>
int Confined(Check check) {
    return Apart([&check] {
        Confine();
        return check();
    });
}

}  // namespace

TEST(Confinement, RefusesWhatReadingDoesNotNeed) {
    if (Apart([] { return static_cast<int>(Confine().size()); }) != 0) GTEST_SKIP() << "this system has not both walls";
    const TemporaryFolder folder;
    static const std::string path = folder.Write("a", "bytes");
    static const std::string other = folder / "b";
    static const char* const file = path.c_str();
    static const char* const made = other.c_str();
    const struct {
        const char* what;
        long (*call)();
        int error;  // one that it must be, or 0 for any
    } rows[] = {
        {"opening for writing", [] { return long{open(file, O_WRONLY)}; }, EACCES},
        {"opening for both", [] { return long{open(file, O_RDWR)}; }, EACCES},
        {"emptying in opening", [] { return long{open(file, O_RDONLY | O_TRUNC)}; }, EACCES},
        {"making in opening", [] { return long{open(made, O_RDONLY | O_CREAT, 0600)}; }, EACCES},
        {"a nameless file", [] { return long{open("/tmp", O_TMPFILE | O_RDWR, 0600)}; }, EACCES},
        {"openat2", [] { return syscall(SYS_openat2, AT_FDCWD, file, nullptr, 0); }, ENOSYS},
        {"io_uring", [] { return syscall(SYS_io_uring_setup, 1, nullptr); }, ENOSYS},
        {"a call that there is not", [] { return syscall(10000); }, ENOSYS},
        {"truncate", [] { return long{truncate(file, 1)}; }, EPERM},
        {"chmod", [] { return long{chmod(file, 0600)}; }, EPERM},
        {"chown", [] { return long{chown(file, getuid(), getgid())}; }, EPERM},
        {"times", [] { return long{utimes(file, nullptr)}; }, EPERM},
        {"extended attributes", [] { return long{setxattr(file, "user.a", "b", 1, 0)}; }, EPERM},
        {"rename", [] { return long{rename(file, made)}; }, EPERM},
        {"unlink", [] { return long{unlink(file)}; }, EPERM},
        {"link", [] { return long{link(file, made)}; }, EPERM},
        {"mkdir", [] { return long{mkdir(made, 0700)}; }, EPERM},
        {"a socket", [] { return long{socket(AF_INET, SOCK_STREAM, 0)}; }, EPERM},
        {"another program", [] { return long{execl("/bin/true", "true", nullptr)}; }, EPERM},
        {"another process", [] { return syscall(SYS_vfork); }, EPERM},
        {"the parent's end", [] { return long{kill(getppid(), 0)}; }, 0},
        {"the parent's memory", [] { return syscall(SYS_process_vm_readv, getppid(), nullptr, 0, nullptr, 0, 0); },
         EPERM},
        {"typing into the terminal", [] { return long{ioctl(0, TIOCSTI, "x")}; }, 0},
    };
    for (const auto& row : rows) {
        const int error = Confined([&row] {
            errno = 0;
            return row.call() == -1 ? errno : 0;
        });
        EXPECT_NE(error, 0) << row.what;
        if (row.error != 0) {
            EXPECT_EQ(error, row.error) << row.what;
        }
    }
    if (!kUnderSanitizers) {
        EXPECT_NE(Confined([] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == -1 ? errno : 0; }), 0);
        EXPECT_NE(Confined([] { return syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0) == -1 ? errno : 0; }), 0);
    }
    EXPECT_EQ(folder.Read("a"), "bytes");
    EXPECT_FALSE(std::filesystem::exists(other));
}

TEST(Confinement, LeavesReadingAndWritingToWhatIsOpen) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("a", "bytes");
    const FileDescriptor open(::open((folder / "b").c_str(), O_WRONLY | O_CREAT, 0600));
    EXPECT_EQ(Confined([&] {
                  const Result<std::string> bytes = ReadRegularFile(path, 100);
                  struct stat status = {};
                  return bytes && WriteAll(open.Get(), *bytes) && stat(folder.Path().c_str(), &status) == 0 ? 7 : 1;
              }),
              7);
    EXPECT_EQ(folder.Read("b"), "bytes");
    EXPECT_EQ(Confined([]() -> int {
                  raise(SIGTERM);
                  return 0;
              }),
              200 + SIGTERM)
        << "it may end itself";
}

}  // namespace ZEMA::testing
