#include "host/system/Paths.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <climits>
#include <cstdint>
#endif

namespace ZEMA {

namespace {

// The folder of the running program, links followed; empty when the system cannot tell.
std::filesystem::path ProgramFolder() {
    std::error_code error;
#ifdef __APPLE__
    char path[PATH_MAX];
    std::uint32_t size = sizeof(path);
    if (_NSGetExecutablePath(path, &size) != 0) return {};
    return std::filesystem::canonical(path, error).parent_path();
#else
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
#endif
}

const char* KindText(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return "is a folder";
        case S_IFIFO:
            return "is a pipe, not a regular file";
        case S_IFSOCK:
            return "is a socket, not a regular file";
        case S_IFCHR:
        case S_IFBLK:
            return "is a device, not a regular file";
        default:
            return "is not a regular file";
    }
}

}  // namespace

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

Result<std::string> AbsolutePath(const std::string& path) {
    if (path.starts_with('/')) return path;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    if (error) return SystemFailure(error.value());
    return (folder / path).string();
}

std::string RealPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    return error ? path : real.string();
}

std::string BesideProgram(const std::string& path) {
    const std::filesystem::path prefix = ProgramFolder().parent_path();
    return prefix.empty() ? "" : (prefix / path).string();
}

Failure CheckRegularFile(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return SystemFailure(errno);
    if (!S_ISREG(status.st_mode)) return {FailureKind::WrongKind, KindText(status.st_mode)};
    return {};
}

bool IsSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

timespec ModifiedTime(const struct stat& status) {
#ifdef __APPLE__
    return status.st_mtimespec;
#else
    return status.st_mtim;
#endif
}

bool LeadsIntoFile(const std::string& path) {
    struct stat status;
    for (std::size_t end = path.rfind('/'); end != std::string::npos && end != 0; end = path.rfind('/', end - 1)) {
        if (stat(path.substr(0, end).c_str(), &status) == 0) return S_ISREG(status.st_mode);
        // Only "not a directory" says that a file stands further in front; a long path to nothing is not walked up.
        if (errno != ENOTDIR) return false;
    }
    return false;
}

}  // namespace ZEMA
