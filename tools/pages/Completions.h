// How shells complete the program's command lines.
#pragma once

#include <string>
#include <vector>

#include "tools/wqf/CommandLine.h"

namespace ZEMA {

// A script each, as the shell's own folder of completions takes it.
std::string BashCompletion(const std::vector<CommandDescription>& commands);
std::string ZshCompletion(const std::vector<CommandDescription>& commands);
std::string FishCompletion(const std::vector<CommandDescription>& commands);

}  // namespace ZEMA
