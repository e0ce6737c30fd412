// Gives up what reading documents does not need.
#pragma once

#include <string>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// Takes from this process, and for good, all that is more than reading files and writing to what is open: making and
// changing files, the network, starting programs and processes, reaching other processes, new code. Two walls do that,
// each of which holds by itself: a list of the system calls that are left, and Landlock, as far as the kernel has it.
//
// What is refused fails with EPERM, EACCES or, where nobody would expect it to work everywhere, ENOSYS; nothing is
// killed. Call it when the plug-in is loaded and everything that is written to is open.
//
// Returns a sentence for each wall that could not be put up; the other one then stands alone.
std::vector<std::string> Confine();

}  // namespace ZEMA
