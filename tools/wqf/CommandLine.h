// The program's command line.
#pragma once

#include <string>
#include <vector>

namespace ZEMA {

// Runs what the arguments, without the program's name, ask for. Returns the exit status: 2 for what is not understood.
int RunCommandLine(const std::vector<std::string>& arguments);

// One option of a command, or what stands behind its options, as manuals and completions have it.
struct OptionDescription {
    std::vector<std::string> names;  // "-R", "--recursive"; none for what is no option
    // What it takes: a kind in capitals ("FILE", "DIR", "PATH", ...), or the words to choose from, with "|" between
    // each two; empty for nothing.
    std::string value;
    bool repeats = false;  // it may be given more than once
    std::string help;      // without a full stop
};

struct CommandDescription {
    std::string name;
    std::string summary;  // as its help begins
    std::string more;     // what its help ends with; may be empty
    std::vector<OptionDescription> options;
};

std::vector<CommandDescription> DescribeCommands();

}  // namespace ZEMA
