// Files that are written aside and take another one's place only when they are whole.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"
#include "host/system/SignalCleanup.h"

namespace ZEMA {

// A new file `.NAME.wqf-XXXXXX` beside the file NAME that it is to become. Whoever opens NAME meanwhile gets the old
// file, and afterwards the new one; it goes again unless it was committed, also when a signal ends the program.
//
// It stays locked for as long as it is worked on, so that the copy that a killed program left behind can be told from
// one that is in use.
class ReplacementFile {
public:
    ReplacementFile() = default;
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    ~ReplacementFile();

    // `path` is the file to become, not a link to it.
    Failure Create(const std::string& path);

    int Descriptor() const { return file_.Get(); }

    // Takes the place, with these permissions. `durable` has the bytes on the disk before and the name after.
    Failure Commit(mode_t mode, bool durable);

private:
    bool Lock() const;

    std::string path_;
    std::string copy_;  // empty when there is none (any more)
    FileDescriptor file_;
    std::optional<SignalCleanup> cleanup_;
};

// Removes the copies for `path` that nobody works on any more.
void RemoveLeftovers(const std::string& path);

}  // namespace ZEMA
