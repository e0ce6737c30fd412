// Copying and moving files and folders, into archives, out of them, and between them.
#pragma once

#include <string>
#include <vector>

#include "host/archive/CopyPlan.h"
#include "host/archive/StorageReport.h"

namespace ZEMA {

// Follows a CopyPlan: to `target`, or into it where it is a folder. All failures are told.
//
// An archive gets all that goes into it or none. A file outside of archives is whole or is not there; it keeps the time
// of its source where that has one, and gets the time of the copy otherwise. What is moved is removed from its old
// place only when all of it is in the new one.
void CopyPaths(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
               StorageReport& report);

}  // namespace ZEMA
