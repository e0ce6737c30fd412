#include "host/archive/ReplacementFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "host/system/Paths.h"

namespace ZEMA {

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kRandomLength = 6;

// The file name of a copy up to its random letters. A long name is cut, since the copy's must not be longer.
std::string CopyNameStart(const std::string& path) {
    const std::string mark = ".wqf-";
    return "." + NameOf(path).substr(0, kLongestName - 1 - mark.size() - kRandomLength) + mark;
}

bool SyncFolder(const std::string& folder) {
    const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot do this for a folder, and then need not.
    return descriptor.IsOpen() && (fsync(descriptor.Get()) == 0 || errno == EINVAL);
}

void RemoveLeftover(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) return;
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file.IsOpen() && flock(file.Get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

}  // namespace

ReplacementFile::~ReplacementFile() {
    if (!copy_.empty()) unlink(copy_.c_str());
}

Failure ReplacementFile::Create(const std::string& path) {
    path_ = path;
    do {
        std::string copy = FolderOf(path) + "/" + CopyNameStart(path) + std::string(kRandomLength, 'X');
        file_ = FileDescriptor(mkostemp(copy.data(), O_CLOEXEC));
        if (!file_.IsOpen()) return SystemFailure(errno);
        copy_ = copy;
        cleanup_.emplace(copy_);
    } while (!Lock());
    return {};
}

// False when somebody took the new file for a leftover before it was locked. Where the file system knows no locks,
// nobody can.
bool ReplacementFile::Lock() const {
    struct stat status;
    flock(file_.Get(), LOCK_EX | LOCK_NB);
    return fstat(file_.Get(), &status) != 0 || status.st_nlink != 0;
}

Failure ReplacementFile::Commit(mode_t mode, bool durable) {
    const bool done = fchmod(file_.Get(), mode) == 0 && (!durable || fsync(file_.Get()) == 0) &&
                      std::rename(copy_.c_str(), path_.c_str()) == 0;
    if (!done) return SystemFailure(errno);
    copy_.clear();
    cleanup_.reset();
    if (!durable || SyncFolder(FolderOf(path_))) return {};
    return SystemFailure(errno).In("it is in place, but may not be on the disk");
}

void RemoveLeftovers(const std::string& path) {
    const std::string start = CopyNameStart(path);
    std::error_code error;
    for (std::filesystem::directory_iterator item(FolderOf(path), error), end; !error && item != end;
         item.increment(error)) {
        const std::string name = item->path().filename().string();
        if (name.size() == start.size() + kRandomLength && name.starts_with(start)) RemoveLeftover(item->path());
    }
}

}  // namespace ZEMA
