// Files that a command writes aside, and that can be told from everybody else's.
#pragma once

#include <optional>
#include <string>

#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"
#include "host/system/SignalCleanup.h"

namespace ZEMA {

// A new file `.NAME.wqf-edit-` and 32 hexadecimal digits beside the file NAME, that it may take the place of when it is
// whole. Whoever opens NAME meanwhile gets the old file, and afterwards the new one. It goes again unless it was
// committed, also when a signal ends the program.
//
// It stays locked for as long as it is worked on, so that what a killed program left behind can be told from what is
// in use. Nobody but the user may read it until somebody gives it other permissions.
class MarkedFile {
public:
    MarkedFile() = default;
    MarkedFile(const MarkedFile&) = delete;
    MarkedFile& operator=(const MarkedFile&) = delete;
    ~MarkedFile();

    // `path` is the file to become, not a link to it.
    Failure Create(const std::string& path);

    // The same without a name, for what is needed for the length of a command only.
    static Result<FileDescriptor> CreateNameless(const std::string& path);

    // Removes all such files from a folder that killed commands of this user left there. Where the file system has no
    // locks none is, since nobody could tell that it is not in use.
    static void RemoveLeftovers(const std::string& folder);

    int Descriptor() const { return file_.Get(); }

    // Takes the place of what is there, or fails where something is there that must not be. `durable` has the bytes on
    // the disk before and the name after. The descriptor is then closed.
    enum class Place { Replace, Free };
    Failure Commit(Place place, bool durable);

private:
    Failure TakePlace(Place place) const;

    std::string path_;
    std::string name_;  // its own for now; empty when there is none (any more)
    FileDescriptor file_;
    std::optional<SignalCleanup> cleanup_;
};

// Whether flock failed, by errno, because the file system has no locks.
bool HasNoLocks(int error);

}  // namespace ZEMA
