// wqf: looks into brick-model documents.

#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "core/Exception.h"
#include "host/system/Output.h"
#include "tools/wqf/CommandLine.h"
#include "tools/wqf/ExitStatus.h"

namespace {

// Needs no memory itself.
void SayThatMemoryRanOut() {
    static constexpr char kText[] = "wqf: out of memory\n";
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, kText, sizeof(kText) - 1);
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that has gone is an error of writing, so that everything is released on the way out.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that would be larger than is allowed.
    std::signal(SIGXFSZ, SIG_IGN);
    ZEMA::ReserveStandardDescriptors();
    try {
        return ZEMA::RunCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const std::bad_alloc&) {
        SayThatMemoryRanOut();
    } catch (const ZEMA::RangeException*) {
        ZEMA::PrintMessage("a text is too long");
    } catch (const std::exception& error) {
        ZEMA::PrintMessage(error.what());
    }
    return ZEMA::kExitSomeFailed;
}
