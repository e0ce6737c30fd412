#include "tests/support/ArchiveTools.h"

#include <cstdlib>
#include <iostream>

namespace ZEMA::testing {

namespace {

std::string Quoted(const std::string& text) {
    return "'" + text + "'";
}

bool Succeeds(const std::string& command) {
    return std::system(("{ " + command + "; } >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace

bool HaveTool(const std::string& name) {
    const bool installed = Succeeds("command -v " + name);
    if (!installed) std::cerr << name << " is not installed: not tested\n";
    return installed;
}

bool RunIn(const std::string& folder, const std::string& command) {
    return Succeeds("cd " + Quoted(folder) + " && " + command);
}

std::vector<std::string> ToolsThatRefuse(const std::string& path, bool empty) {
    const std::string archive = Quoted(path);
    const struct {
        const char* tool;
        std::string command;
    } checks[] = {
        {"unzip", empty ? "true" : "unzip -tqq " + archive},
        {"python3",
         "python3 -c 'import sys, zipfile; sys.exit(zipfile.ZipFile(sys.argv[1]).testzip() is not None)' " + archive},
        {"7z", "7z t " + archive},
        {"bsdtar", "LC_ALL=C.UTF-8 bsdtar -xOf " + archive},
    };
    std::vector<std::string> refusing;
    for (const auto& check : checks) {
        if (HaveTool(check.tool) && !Succeeds(check.command)) refusing.push_back(check.tool);
    }
    return refusing;
}

}  // namespace ZEMA::testing
