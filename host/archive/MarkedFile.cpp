#include "host/archive/MarkedFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>

#include "host/system/Paths.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

using Foundation::Uninterrupted;

constexpr std::string_view kMark = ".wqf-edit-";
constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kDigitCount = 32;
constexpr std::size_t kLongestName = 255;

bool IsMarked(std::string_view name) {
    if (name.size() < kMark.size() + kDigitCount) return false;
    const std::string_view digits = name.substr(name.size() - kDigitCount);
    name.remove_suffix(kDigitCount);
    return name.ends_with(kMark) && digits.find_first_not_of(kHexDigits) == std::string_view::npos;
}

// A long name is cut, since the new file's must not be longer. Empty, with errno, where there is no randomness.
std::string NewName(const std::string& path) {
    unsigned char random[kDigitCount / 2];
    if (getentropy(random, sizeof(random)) != 0) return {};
    std::string name = "." + NameOf(path).substr(0, kLongestName - 1 - kMark.size() - kDigitCount);
    name += kMark;
    for (const unsigned char byte : random) {
        name += kHexDigits[byte >> 4];
        name += kHexDigits[byte & 15];
    }
    return FolderOf(path) + "/" + name;
}

// False when somebody took the new file for a leftover before it was locked. Where there are no locks nobody can.
bool Lock(int file) {
    struct stat status;
    Uninterrupted([file] { return flock(file, LOCK_EX | LOCK_NB); });
    return fstat(file, &status) != 0 || status.st_nlink != 0;
}

// Ends the listing of a folder.
struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// The lock is looked for first: the file of a command that is at work may be renamed, and another one get its name.
void RemoveLeftover(int folder, const char* name) {
    struct stat listed, opened;
    if (fstatat(folder, name, &listed, AT_SYMLINK_NOFOLLOW) != 0) return;
    if (!S_ISREG(listed.st_mode) || listed.st_uid != geteuid()) return;
    constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const FileDescriptor file(Uninterrupted([&] { return openat(folder, name, kFlags); }));
    if (!file.IsOpen() || Uninterrupted([&] { return flock(file.Get(), LOCK_EX | LOCK_NB); }) != 0) return;
    if (fstat(file.Get(), &opened) != 0 || fstatat(folder, name, &listed, AT_SYMLINK_NOFOLLOW) != 0) return;
    if (IsSameFile(opened, listed)) unlinkat(folder, name, 0);
}

// Some file systems cannot do this for a folder, and then need not.
bool SyncFolder(const std::string& folder) {
    const FileDescriptor descriptor(
        Uninterrupted([&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!descriptor.IsOpen()) return false;
    return Uninterrupted([&] { return fsync(descriptor.Get()); }) == 0 || errno == EINVAL;
}

}  // namespace

MarkedFile::~MarkedFile() {
    if (!name_.empty()) unlink(name_.c_str());
}

Failure MarkedFile::Create(const std::string& path) {
    path_ = path;
    do {
        const std::string name = NewName(path);
        if (name.empty()) return SystemFailure(errno);
        cleanup_.emplace(name);  // before there is a file that a signal could leave behind
        constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        file_ = FileDescriptor(Uninterrupted([&] { return open(name.c_str(), kFlags, 0600); }));
        if (!file_.IsOpen()) return SystemFailure(errno);
        name_ = name;
    } while (!Lock(file_.Get()));
    return {};
}

Result<FileDescriptor> MarkedFile::CreateNameless(const std::string& path) {
    MarkedFile file;
    if (Failure failure = file.Create(path)) return failure;
    unlink(file.name_.c_str());
    file.name_.clear();
    return std::move(file.file_);
}

// Some file systems report what they could not write only when the file is closed. Its lock must hold until it has its
// final name, or another command takes it for a leftover: a second descriptor keeps it.
Failure MarkedFile::Commit(Place place, bool durable) {
    if (durable && Uninterrupted([this] { return fsync(file_.Get()); }) != 0) return SystemFailure(errno);
    const FileDescriptor lock(fcntl(file_.Get(), F_DUPFD_CLOEXEC, 0));
    if (!lock.IsOpen()) return SystemFailure(errno);
    if (close(file_.Release()) != 0 && errno != EINTR) return SystemFailure(errno);
    if (Failure failure = TakePlace(place)) return failure;
    name_.clear();
    cleanup_.reset();
    if (durable && !SyncFolder(FolderOf(path_))) {
        return SystemFailure(errno).In("it is in place, but may not be on the disk");
    }
    return {};
}

// A hard link never replaces anything. A file system without them leaves a moment in which somebody else's file could
// be replaced.
Failure MarkedFile::TakePlace(Place place) const {
    if (place == Place::Free) {
        if (link(name_.c_str(), path_.c_str()) == 0) {
            unlink(name_.c_str());
            return {};
        }
        struct stat status;
        if (errno == EEXIST || lstat(path_.c_str(), &status) == 0) return SystemFailure(EEXIST);
    }
    return std::rename(name_.c_str(), path_.c_str()) == 0 ? Failure() : SystemFailure(errno);
}

void MarkedFile::RemoveLeftovers(const std::string& folder) {
    const std::unique_ptr<DIR, CloseFolder> listing(opendir(folder.c_str()));
    if (!listing) return;
    while (const dirent* const entry = readdir(listing.get())) {
        if (IsMarked(entry->d_name)) RemoveLeftover(dirfd(listing.get()), entry->d_name);
    }
}

bool HasNoLocks(int error) {
    return error == ENOLCK || error == ENOSYS || error == EOPNOTSUPP;
}

}  // namespace ZEMA
