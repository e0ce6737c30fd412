// wqf mkdir: makes folders, inside archives and outside.

#include "host/archive/StorageMaking.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

int RunMkdir(bool parents, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("make");
    MakeFolders(paths, parents, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
