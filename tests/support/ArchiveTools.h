// The standard programs for archives, where they are installed.
#pragma once

#include <string>
#include <vector>

namespace ZEMA::testing {

bool HaveTool(const std::string& name);

// Runs a shell command in a folder, quietly; true when it succeeded.
bool RunIn(const std::string& folder, const std::string& command);

// Has every program that is installed test the archive: unzip, Python's zipfile, 7z, bsdtar. Gives the names of those
// that find fault with it. An archive without members is not shown to unzip, which calls it empty and fails.
std::vector<std::string> ToolsThatRefuse(const std::string& path, bool empty = false);

// Those of them, and zip, that are not there to be asked.
std::string MissingTools();

}  // namespace ZEMA::testing

// Skips a test, saying so, where a program is missing.
#define ZEMA_NEEDS_TOOL(name) \
    if (!::ZEMA::testing::HaveTool(name)) GTEST_SKIP() << (name) << " is not installed"

// At the end of a test that has done what it could without them.
#define ZEMA_TELLS_MISSING_TOOLS() \
    if (!::ZEMA::testing::MissingTools().empty()) GTEST_SKIP() << "not installed:" << ::ZEMA::testing::MissingTools()
