// What the file commands do in archives.
#pragma once

#include <string>
#include <vector>

#include "host/archive/StorageReport.h"

namespace ZEMA {

struct CopyOptions {
    bool recursive = false;  // folders too
    bool force = false;      // over write-protected files too
    bool keepExisting = false;
    bool move = false;
};

// Follows a CopyPlan: to `target`, or into it where it is a folder. All failures are told.
//
// An archive gets all that goes into it or none. A file outside of archives is whole or is not there; it keeps the time
// of its source where that has one, and gets the time of the copy otherwise. What is moved is removed from its old
// place only when all of it is in the new one.
void CopyPaths(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
               StorageReport& report);

struct RemoveOptions {
    bool recursive = false;
    bool force = false;  // also what is write-protected; what is not there is no failure
};

// Removes each path; of a link the link itself. All failures are told. Of one archive all is removed or nothing.
void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report);

// Removes a file, link, or folder with all below it, outside of archives. What cannot be removed stays, with the
// folders around it, and is told by `shown` and what follows it.
void RemoveNative(const std::string& path, const std::string& shown, bool force, StorageReport& report);

// Makes each folder, inside archives or outside; with `parents` also those on the way, and one that is there is fine.
// All failures are told. One archive gets all its folders or none.
void MakeFolders(const std::vector<std::string>& paths, bool parents, StorageReport& report);

// Makes archives without members, where nothing is yet. All failures are told.
void MakeArchives(const std::vector<std::string>& paths, StorageReport& report);

}  // namespace ZEMA
