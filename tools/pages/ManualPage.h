// Manual pages as scdoc reads them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/wqf/CommandLine.h"

namespace ZEMA {

// The page of the program: its commands, and behind them `text`.
std::string ProgramPage(const std::vector<CommandDescription>& commands, std::string_view text);

// The page of one command: what the command line knows of it, and `text`, whose part in front of its first heading
// belongs to the description. Text is scdoc's own markup.
std::string CommandPage(const CommandDescription& command, std::string_view text);

}  // namespace ZEMA
