// The built program, run as its users run it.
#pragma once

#include <string>
#include <vector>

namespace ZEMA::testing {

struct Result {
    int exit = -1;   // the exit status, or -1
    int signal = 0;  // that ended it, or 0
    std::string out;
    std::string err;
    int pieces = 0;  // in which `out` was written, as long as they are short
};

// Runs wqf and waits for its end; a run of more than a minute is ended and fails the test. Standard input holds
// `input`.
Result Wqf(const std::vector<std::string>& arguments, const std::string& input = "");

// Runs a line of the shell in which $WQF is the program.
Result Shell(const std::string& line);

}  // namespace ZEMA::testing
