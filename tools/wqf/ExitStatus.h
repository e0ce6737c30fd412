// What the program answers when it ends.
#pragma once

#include "host/system/Output.h"

namespace ZEMA {

inline constexpr int kExitDone = 0;
inline constexpr int kExitSomeFailed = 1;
inline constexpr int kExitWrongUse = 2;

// After output that could not be written: says why, and returns the exit status. A reader that has gone is no fault to
// speak of; the program ends as others do then, by SIGPIPE. Called last, when everything is released.
int ExitStatusOf(const Output& output);

}  // namespace ZEMA
