// wqf index: keeps the index of the user's documents.

#include <memory>
#include <string>

#include "host/documents/DocumentRepair.h"
#include "host/index/IndexFile.h"
#include "host/index/IndexRun.h"
#include "host/plugin/PluginHost.h"
#include "host/system/Output.h"
#include "host/workers/DocumentWorkers.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/IndexCommands.h"

namespace ZEMA {

namespace {

int SayWhyNot(const std::string& index, const Failure& failure) {
    const bool mayRebuild = failure.kind == FailureKind::Damaged;
    PrintMessage(index, failure.text + (mayRebuild ? "; 'wqf index --rebuild FOLDER' builds it anew" : ""));
    return failure.kind == FailureKind::WrongKind || failure.kind == FailureKind::Unsupported ? kExitWrongUse
                                                                                              : kExitSomeFailed;
}

std::string Counted(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what;
}

// All numbers that are not 0.
std::string SumsOf(const IndexRunReport& report) {
    std::string sums = Counted(report.found, report.found == 1 ? "document" : "documents");
    sums += ": " + Counted(report.read, "read");
    if (report.failed != 0) sums += ", " + Counted(report.failed, "of them not imported");
    if (report.moved != 0) sums += ", " + Counted(report.moved, "moved");
    if (report.removed != 0) sums += ", " + Counted(report.removed, "removed");
    if (report.away != 0) sums += ", " + Counted(report.away, "away");
    return sums + "\n";
}

int Forget(Database& database, const IndexOptions& options) {
    for (const std::string& folder : options.folders) {
        const Result<std::size_t> count = ForgetFolder(database, folder);
        if (!count) return SayWhyNot(options.index, count.Why());
        if (*count == 0) PrintMessage(folder, "the index knows no documents there");
    }
    return kExitDone;
}

int Update(Database& database, DocumentWorkers& workers, const IndexOptions& options) {
    std::unique_ptr<ProgressLine> progress;
    IndexRunOptions run;
    run.folders = options.folders;
    run.program = ZEMA_VERSION;
    run.tell = [&](const std::string& path, const std::string& text) {
        if (progress) progress->Hide();
        PrintMessage(path, text);
    };
    run.showProgress = [&](std::size_t done, std::size_t total, std::size_t failed) {
        if (!progress) progress = std::make_unique<ProgressLine>(options.run.quiet ? 0 : total);
        progress->Show(done, failed);
    };
    const Result<IndexRunReport> report = UpdateIndex(database, workers, run);
    progress = nullptr;
    if (!report) return SayWhyNot(options.index, report.Why());
    if (report->foldersWithout != 0) {
        PrintMessage("no folder is known yet; name one");
        return kExitWrongUse;
    }
    if (options.run.verbose) {
        for (const std::string& wall : workers.MissingWalls()) PrintMessage(wall);
    }
    Output output;
    if (!options.run.quiet) output.Write(SumsOf(*report));
    if (output.Failed()) return ExitStatusOf(output);
    return report->failed + report->foldersFailed == 0 ? kExitDone : kExitSomeFailed;
}

}  // namespace

int RunIndex(const IndexOptions& given) {
    IndexOptions options = given;
    if (options.index.empty()) {
        const Result<std::string> index = DefaultIndexPath();
        if (!index) return SayWhyNot("the index", index.Why());
        options.index = *index;
    }
    Result<PluginHost> host = LoadPlugin(options.bundle);
    if (!host) {
        PrintMessage(host.Why().text);
        return kExitWrongUse;
    }
    PrepareRepair();
    // Before the index is opened, which no worker has anything to do with.
    Result<DocumentWorkers> workers = DocumentWorkers::Start(
        [&host](const FoundDocument& document) { return ImportRepaired(*host, document); }, options.run.workers);
    if (!workers) return SayWhyNot("workers", workers.Why());

    if (options.rebuild) {
        const Result<std::string> aside = SetIndexAside(options.index);
        if (!aside) return SayWhyNot(options.index, aside.Why());
        if (!aside->empty()) PrintMessage(options.index, "the old one is now " + *aside);
    }
    const Result<std::unique_ptr<Database>> database = OpenIndexForWriting(options.index);
    if (!database) return SayWhyNot(options.index, database.Why());
    return options.forget ? Forget(**database, options) : Update(**database, *workers, options);
}

}  // namespace ZEMA
