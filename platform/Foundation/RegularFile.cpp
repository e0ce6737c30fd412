#include "platform/Foundation/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Foundation/Uninterrupted.h"

namespace Foundation {
namespace {

constexpr int kFlags = O_CLOEXEC | O_NOCTTY;

int OpenByName(const std::string& path, int flags) {
    return Uninterrupted([&] { return open(path.c_str(), flags | kFlags); });
}

// Reading for an index is no use of a file that its time of last access should tell of. The system allows leaving that
// time alone to the owner of the file and to the superuser.
int OpenQuietly(const std::string& path, int flags) {
#ifdef O_NOATIME
    if ((flags & O_ACCMODE) == O_RDONLY) {
        const int descriptor = OpenByName(path, flags | O_NOATIME);
        if (descriptor != -1 || errno != EPERM) return descriptor;
    }
#endif
    return OpenByName(path, flags);
}

// The descriptor if it is one of a regular file; otherwise it is closed.
int OnlyRegular(int descriptor) {
    struct stat status = {};
    const int error = fstat(descriptor, &status) != 0 ? errno : S_ISREG(status.st_mode) ? 0 : EINVAL;
    if (error == 0) return descriptor;
    close(descriptor);
    errno = error;
    return -1;
}

// Looks before it opens, since opening a pipe or a device already does something to whoever is at its other end; and
// looks again at what it opened, since the name may have changed hands in between. Not blocking covers that moment,
// but gives up where there is a lease.
int OpenBetweenTwoLooks(const std::string& path, int mode) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return -1;
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return -1;
    }
    const int descriptor = OpenQuietly(path, mode | O_NONBLOCK);
    return descriptor == -1 ? -1 : OnlyRegular(descriptor);
}

}  // namespace

int OpenRegularFile(const std::string& path, int mode) {
#ifdef O_PATH
    // Takes hold of what stands there without opening it, so that the second open can wait: it is of the same file.
    int held = OpenByName(path, O_PATH);
    if (held != -1) held = OnlyRegular(held);
    if (held == -1) return -1;
    const int descriptor = OpenQuietly("/proc/self/fd/" + std::to_string(held), mode);
    const int error = errno;
    close(held);
    errno = error;
    if (descriptor != -1 || error != ENOENT) return descriptor;
        // There is no /proc here.
#endif
    return OpenBetweenTwoLooks(path, mode);
}

}  // namespace Foundation
