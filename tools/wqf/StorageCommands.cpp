// wqf cp, mv, rm, mkdir, new and mend: changes to archives. Failures go to standard error as they come.
#include "tools/wqf/StorageCommands.h"

#include "host/system/Output.h"
#include "host/system/Utf8Text.h"
#include "tools/wqf/ExitStatus.h"

namespace ZEMA {

namespace {

// One line for an archive that was written anew, or would be; nothing for one that is fine.
std::string LineOf(const std::string& path, const std::vector<std::string>& faults, bool dryRun) {
    if (faults.empty()) return "";
    std::string line = path + (dryRun ? ": would be rewritten: " : ": rewritten: ") + faults.front();
    if (faults.size() > 1) line += " (and " + std::to_string(faults.size() - 1) + " more)";
    return EscapeControls(ReplaceInvalidUtf8(line)) + "\n";
}

}  // namespace

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

int RunMend(const MendOptions& options, const std::vector<std::string>& paths) {
    StorageReport report = ReportOf("mend");
    Output output;
    for (const std::string& path : paths) {
        MendOptions own = options;
        own.tellWaiting = [&path] { PrintMessage(path, "another command works on it; waiting"); };
        const Result<MendReport> done = MendArchive(path, own);
        if (!done) {
            report.Fail(path, done.Why().text);
            continue;
        }
        for (const std::string& obstacle : done->obstacles) report.Fail(path, obstacle);
        if (done->obstacles.empty()) output.Write(LineOf(path, done->faults, options.dryRun));
    }
    return output.Failed() ? ExitStatusOf(output) : ExitStatusOf(report);
}

}  // namespace ZEMA
