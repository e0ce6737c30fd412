// The standard programs for archives, where they are installed.
#pragma once

#include <string>
#include <vector>

namespace ZEMA::testing {

// Says so on standard error where it is missing; configuring the build warns of it too.
bool HaveTool(const std::string& name);

// Runs a shell command in a folder, quietly; true when it succeeded.
bool RunIn(const std::string& folder, const std::string& command);

// Has every program that is installed test the archive: unzip, Python's zipfile, 7z, bsdtar. Gives the names of those
// that find fault with it. An archive without members is not shown to unzip, which calls it empty and fails.
std::vector<std::string> ToolsThatRefuse(const std::string& path, bool empty = false);

}  // namespace ZEMA::testing
