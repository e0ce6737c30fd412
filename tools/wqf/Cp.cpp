// wqf cp: copies into archives, out of them and between them.

#include "host/archive/StorageCopy.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

int RunCp(const CopyOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("copy");
    CopyPaths({paths.begin(), paths.end() - 1}, paths.back(), options, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
