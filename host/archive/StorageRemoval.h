// Removing files and folders, inside archives and outside.
#pragma once

#include <string>
#include <vector>

#include "host/archive/StorageReport.h"

namespace ZEMA {

struct RemoveOptions {
    bool recursive = false;
    bool force = false;  // also what is write-protected; what is not there is no failure
};

// Removes each path; of a link the link itself. All failures are told. Of one archive all is removed or nothing.
void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report);

// Removes a file, link, or folder with all below it, outside of archives. What cannot be removed stays, with the
// folders around it, and is told by `shown` and what follows it.
void RemoveNative(const std::string& path, const std::string& shown, bool force, StorageReport& report);

}  // namespace ZEMA
