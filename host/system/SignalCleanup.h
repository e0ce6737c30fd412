// Files that must not stay behind when the user stops the program.
#pragma once

#include <string>

namespace ZEMA {

// From construction on the file is removed when SIGINT, SIGTERM or SIGHUP ends the program, which it then still does.
// Signals that are ignored or handled otherwise stay so. Of very many files at once only the first ones are seen to.
class SignalCleanup {
public:
    explicit SignalCleanup(const std::string& path);
    SignalCleanup(const SignalCleanup&) = delete;
    SignalCleanup& operator=(const SignalCleanup&) = delete;
    ~SignalCleanup();

private:
    int slot_ = -1;
};

}  // namespace ZEMA
