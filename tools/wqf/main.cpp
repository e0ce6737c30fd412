// wqf: looks into brick-model documents.

#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include "core/Exception.h"
#include "host/Output.h"
#include "tools/wqf/CommandLine.h"
#include "tools/wqf/Commands.h"

int main(int argc, char** argv) {
    // A reader that has gone is an error of writing, so that everything is released on the way out.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return ZEMA::RunCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const ZEMA::RangeException*) {
        ZEMA::PrintMessage("a text is too long");
    } catch (const std::exception& error) {
        ZEMA::PrintMessage(error.what());
    }
    return ZEMA::kExitSomeFailed;
}
