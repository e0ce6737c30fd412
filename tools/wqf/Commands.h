// What each command is asked for, and the function that does it. Every one returns the program's exit status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "host/system/Output.h"
#include "importer/DocumentLoad.h"

namespace ZEMA {

inline constexpr int kExitDone = 0;
inline constexpr int kExitSomeFailed = 1;
inline constexpr int kExitWrongUse = 2;

// After output that could not be written: says why, and returns the exit status. A reader that has gone is no fault to
// speak of; the program ends as others do then, by SIGPIPE. Called last, when everything is released.
int ExitStatusOf(const Output& output);

// The paths themselves or a file that lists them, never both.
struct DocumentPaths {
    std::string files0From;
    std::vector<std::string> paths;
};

struct ImportOptions {
    std::string bundle;  // empty: where it is built or installed
    RecordFormat format = RecordFormat::Text;
    DocumentPaths documents;
};
int RunImport(const ImportOptions& options);

struct CheckOptions {
    std::uint32_t loaderOptions = kImportOptions;
    RecordFormat format = RecordFormat::Text;  // any but a property list
    DocumentPaths documents;
};
int RunCheck(const CheckOptions& options);

struct SceneOptions {
    std::uint32_t loaderOptions = kImportOptions;
    std::string path;
};
int RunScene(const SceneOptions& options);

int RunCatalogue();

}  // namespace ZEMA
