// wqf rm: removes files and folders, inside archives and outside.

#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

int RunRm(const RemoveOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("remove");
    RemovePaths(paths, options, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
