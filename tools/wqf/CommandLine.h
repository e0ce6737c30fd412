// The program's command line.
#pragma once

#include <string>
#include <vector>

namespace ZEMA {

// Runs what the arguments, without the program's name, ask for. Returns the exit status: 2 for what is not understood.
int RunCommandLine(const std::vector<std::string>& arguments);

}  // namespace ZEMA
