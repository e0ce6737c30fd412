// wqf new: makes archives without members.

#include "host/archive/StorageMaking.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

int RunNew(const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("make");
    MakeArchives(paths, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
