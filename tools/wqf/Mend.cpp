// wqf mend: writes archives anew that the importer does not take, or not whole.
#include "host/archive/ArchiveMend.h"
#include "host/system/Output.h"
#include "host/system/Utf8Text.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/StorageCommands.h"

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
