// wqf cp, mv, rm, mkdir and new: changes to archives. Failures go to standard error as they come.

#include "tools/wqf/StorageCommands.h"

#include "host/system/Output.h"
#include "tools/wqf/ExitStatus.h"

namespace ZEMA {

StorageReport ReportOf(const char* verb) {
    return StorageReport(verb, [](const std::string& message) { PrintMessage(message); });
}

int ExitStatusOf(const StorageReport& report) {
    return report.Failed() ? kExitSomeFailed : kExitDone;
}

int RunCp(const CopyOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("copy");
    CopyPaths({paths.begin(), paths.end() - 1}, paths.back(), options, report);
    return ExitStatusOf(report);
}

int RunMv(const CopyOptions& given, const std::vector<std::string>& paths) {
    CopyOptions options = given;
    options.recursive = true;
    options.move = true;
    StorageReport report = ReportOf("move");
    CopyPaths({paths.begin(), paths.end() - 1}, paths.back(), options, report);
    return ExitStatusOf(report);
}

int RunRm(const RemoveOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("remove");
    RemovePaths(paths, options, report);
    return ExitStatusOf(report);
}

int RunMkdir(const MakeOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("make");
    MakeFolders(paths, options, report);
    return ExitStatusOf(report);
}

int RunNew(const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("make");
    MakeArchives(paths, report);
    return ExitStatusOf(report);
}

}  // namespace ZEMA
