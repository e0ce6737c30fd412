// wqf mv: moves into archives, out of them and between them.

#include "host/archive/StorageCopy.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

int RunMv(const CopyOptions& given, const std::vector<std::string>& paths) {
    CopyOptions options = given;
    options.recursive = true;
    options.move = true;
    StorageReport report = ReportOf("move");
    CopyPaths({paths.begin(), paths.end() - 1}, paths.back(), options, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
