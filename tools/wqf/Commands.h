// What each command is asked for, and the function that does it. Every one returns the program's exit status.
#pragma once

#include <string>
#include <vector>

#include "host/Output.h"
#include "host/RecordWriter.h"

namespace ZEMA {

inline constexpr int kExitDone = 0;
inline constexpr int kExitSomeFailed = 1;
inline constexpr int kExitWrongUse = 2;

// After output that could not be written: says why, and returns the exit status. A reader that has gone is no fault to
// speak of; the program ends as others do then, by SIGPIPE. Called last, when everything is released.
int ExitStatusOf(const Output& output);

struct ImportOptions {
    std::string bundle;      // empty: where it is built or installed
    std::string files0From;  // empty: the paths below
    RecordFormat format = RecordFormat::Text;
    std::vector<std::string> paths;
};
int RunImport(const ImportOptions& options);

}  // namespace ZEMA
