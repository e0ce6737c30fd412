#include "tools/wqf/ExitStatus.h"

#include <cerrno>
#include <csignal>

#include "host/system/Failure.h"

namespace ZEMA {

int ExitStatusOf(const Output& output) {
    if (!output.Failed()) return kExitDone;
    if (output.Error() == EPIPE) {  // the reader has what it wanted: end as programs do that know no other way
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    PrintMessage("standard output", SystemFailure(output.Error()).text);
    return kExitSomeFailed;
}

}  // namespace ZEMA
