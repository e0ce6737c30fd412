// The archive file that a command works on: nobody else's meanwhile, and its successor like it.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"

namespace ZEMA {

// An archive file, opened and locked against other commands for as long as this is there. Links were followed. On file
// systems without locks all rests on IsUnchanged.
class LockedArchive {
public:
    // `force` also opens what is write-protected. A lock that somebody holds is waited for; `tellWaiting` is called,
    // once, after a second.
    static Result<LockedArchive> Open(const std::string& path, bool force, const std::function<void()>& tellWaiting);

    const std::string& Path() const { return path_; }  // without links
    int Descriptor() const { return file_.Get(); }
    const struct stat& Status() const { return status_; }

    // Whether this is the open file, and still as that one is now.
    bool IsOf(int file) const;

    // Whether the path still leads to this file, and nobody has changed it since it was opened.
    bool IsUnchanged() const;

    // Gives a new file the group, the access list and the extended attributes. Fails, as Refused, where that cannot be
    // and the archive is then somebody else's to read, unless `force`.
    Failure GiveAttributes(int to, bool force) const;

    // Gives it the owner, where the system lets us, and the permissions. Last of all, since writing takes some away.
    Failure GiveOwner(int to) const;

private:
    LockedArchive() = default;
    Failure Lock(const std::function<void()>& tellWaiting) const;

    std::string path_;
    FileDescriptor file_;
    struct stat status_ = {};
};

// Why an archive is not edited whose permissions are against it.
Failure WriteProtected();

}  // namespace ZEMA
