#include "tools/wqf/StorageCommands.h"

#include "host/system/Output.h"
#include "tools/wqf/Commands.h"

namespace ZEMA {

StorageReport ReportOf(const char* verb) {
    return StorageReport(verb, [](const std::string& message) { PrintMessage(message); });
}

int ExitStatusOf(const StorageReport& report) {
    return report.Failed() ? kExitSomeFailed : kExitDone;
}

}  // namespace ZEMA
