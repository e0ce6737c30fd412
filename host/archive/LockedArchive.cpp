#include "host/archive/LockedArchive.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "host/archive/ExtendedAttributes.h"
#include "host/archive/MarkedFile.h"
#include "host/system/Paths.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

using Foundation::Uninterrupted;
using namespace std::chrono_literals;

constexpr auto kQuietWait = 1s;
constexpr auto kPoll = 20ms;

timespec ChangedTime(const struct stat& status) {
#ifdef __APPLE__
    return status.st_ctimespec;
#else
    return status.st_ctim;
#endif
}

bool IsSameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool IsSameState(const struct stat& a, const struct stat& b) {
    return IsSameFile(a, b) && a.st_size == b.st_size && IsSameTime(ModifiedTime(a), ModifiedTime(b)) &&
           IsSameTime(ChangedTime(a), ChangedTime(b));
}

// For writing, since some file systems give no lock to a descriptor that is not.
Result<FileDescriptor> OpenForLock(const std::string& path, bool force) {
    Result<FileDescriptor> file = OpenRegularFile(path, O_RDWR);
    if (file || file.Why().error != EACCES) return file;
    return force ? OpenRegularFile(path) : WriteProtected();
}

}  // namespace

Failure WriteProtected() {
    return Refusal("it is write-protected; --force edits it all the same");
}

// Whoever had the lock before may have put another file in the place of the one that was opened.
Result<LockedArchive> LockedArchive::Open(const std::string& path, bool force,
                                          const std::function<void()>& tellWaiting) {
    LockedArchive archive;
    archive.path_ = RealPath(path);
    for (;;) {
        Result<FileDescriptor> file = OpenForLock(archive.path_, force);
        if (!file) return file.Why();
        archive.file_ = std::move(*file);
        if (Failure failure = archive.Lock(tellWaiting)) return failure;
        struct stat now;
        if (fstat(archive.file_.Get(), &archive.status_) != 0) return SystemFailure(errno);
        if (stat(archive.path_.c_str(), &now) == 0 && IsSameFile(now, archive.status_)) return archive;
    }
}

Failure LockedArchive::Lock(const std::function<void()>& tellWaiting) const {
    const auto start = std::chrono::steady_clock::now();
    int result = Uninterrupted([this] { return flock(file_.Get(), LOCK_EX | LOCK_NB); });
    while (result != 0 && errno == EWOULDBLOCK && std::chrono::steady_clock::now() - start < kQuietWait) {
        std::this_thread::sleep_for(kPoll);
        result = Uninterrupted([this] { return flock(file_.Get(), LOCK_EX | LOCK_NB); });
    }
    if (result != 0 && errno == EWOULDBLOCK) {
        if (tellWaiting) tellWaiting();
        result = Uninterrupted([this] { return flock(file_.Get(), LOCK_EX); });
    }
    return result == 0 || HasNoLocks(errno) ? Failure() : SystemFailure(errno);
}

bool LockedArchive::IsOf(int file) const {
    struct stat now;
    return fstat(file, &now) == 0 && IsSameState(now, status_);
}

bool LockedArchive::IsUnchanged() const {
    struct stat now;
    return stat(path_.c_str(), &now) == 0 && IsSameState(now, status_);
}

Failure LockedArchive::GiveAttributes(int to, bool force) const {
    struct stat status;
    if (fstat(to, &status) != 0) return SystemFailure(errno);
    const uid_t sameOwner = static_cast<uid_t>(-1);
    if (status.st_gid != status_.st_gid && fchown(to, sameOwner, status_.st_gid) != 0 && !force) {
        return Refusal("its group cannot be given to the new file; --force does without");
    }
    if (!CopyExtendedAttributes(path_, to) && !force) {
        return Refusal("its extended attributes cannot be given to the new file; --force does without");
    }
    return {};
}

// Permissions to act as another user or group are only for the owner and the group that they were given for.
Failure LockedArchive::GiveOwner(int to) const {
    struct stat status;
    const gid_t sameGroup = static_cast<gid_t>(-1);
    if (fchown(to, status_.st_uid, sameGroup) != 0) errno = 0;
    if (fstat(to, &status) != 0) return SystemFailure(errno);
    const bool same = status.st_uid == status_.st_uid && status.st_gid == status_.st_gid;
    return fchmod(to, status_.st_mode & (same ? 07777 : 0777)) == 0 ? Failure() : SystemFailure(errno);
}

}  // namespace ZEMA
