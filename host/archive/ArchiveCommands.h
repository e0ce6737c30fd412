// What the file commands do: changes to archives, in terms of the paths that a user names.
#pragma once

#include <string>
#include <vector>

#include "host/archive/StorageReport.h"

namespace ZEMA {

// Archives are folders here, and only what lies in one, or goes into one, is worked on: plain files and folders are
// better served by the system's own commands, which keep their owners, times and links. No command replaces a file that
// is an archive, or looks like one.
//
// Each tells all failures to the report. Of what goes on in one archive all is done or nothing.

// How a copy or a move is to be done.
struct CopyOptions {
    bool recursive = false;     // folders too
    bool force = false;         // over write-protected files, and in archives that are not replaced otherwise
    bool keepExisting = false;  // files that are there stay as they are
    bool move = false;          // the sources are removed once all of them is in the new place
};

// Copies or moves to `target`, or into it where it is a folder or an archive. A source that is an archive, and is named
// without a "/" behind it, is a file. Outside of archives a file is written whole or not at all; it keeps the time of
// its source where that has one, and gets the time of the copy otherwise.
void CopyPaths(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
               StorageReport& report);

// What may be removed.
struct RemoveOptions {
    bool recursive = false;  // folders too
    bool force = false;      // also what is write-protected; what is not there is no failure
};

// Removes members, and folders with all that lies below them, from archives.
void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report);

// What may be made, and where.
struct MakeOptions {
    bool parents = false;  // also the folders on the way, and one that is there is fine
    bool force = false;    // in write-protected archives too
};

// Makes folders in archives.
void MakeFolders(const std::vector<std::string>& paths, const MakeOptions& options, StorageReport& report);

// Makes archives without members, where nothing is yet.
void MakeArchives(const std::vector<std::string>& paths, StorageReport& report);

}  // namespace ZEMA
