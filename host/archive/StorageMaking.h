// Making folders and archives.
#pragma once

#include <string>
#include <vector>

#include "host/archive/StorageReport.h"

namespace ZEMA {

// Makes each folder, inside archives or outside; with `parents` also those on the way, and one that is there is fine.
// All failures are told. One archive gets all its folders or none.
void MakeFolders(const std::vector<std::string>& paths, bool parents, StorageReport& report);

// Makes archives without members, where nothing is yet. All failures are told.
void MakeArchives(const std::vector<std::string>& paths, StorageReport& report);

}  // namespace ZEMA
