#include "tools/wqf/DocumentRun.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "host/confinement/Confinement.h"
#include "host/documents/DocumentFinder.h"
#include "host/workers/LastWords.h"
#include "host/workers/MemoryLimit.h"
#include "tools/wqf/ExitStatus.h"

namespace ZEMA {

namespace {

using NewPrinter = std::function<std::unique_ptr<RecordPrinter>()>;

// Counts records and prints them.
class Run {
public:
    Run(RecordPrinter& printer, const RunOptions& options, std::size_t total)
        : printer_(printer), options_(options), progress_(options.quiet ? 0 : total) {
        output_.Write(printer_.Head(total != 1));
    }

    // False when nobody takes the output any more.
    bool Print(const DocumentRecord& record) {
        progress_.Hide();
        if (!output_.Write(printer_.Record(record))) return false;
        if (const std::string problem = printer_.Problem(record); !problem.empty()) PrintMessage(record.path, problem);
        failed_ += record.imported ? 0 : 1;
        progress_.Show(++done_, failed_);
        return true;
    }

    int Finish() {
        progress_.Hide();
        output_.Write(printer_.Tail());
        if (output_.Failed()) return ExitStatusOf(output_);
        return failed_ == 0 ? kExitDone : kExitSomeFailed;
    }

    void PrintSums() const {
        if (options_.quiet) return;
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        const auto tenths = static_cast<long>(std::lround(seconds * 10));
        PrintMessage(std::to_string(done_) + (done_ == 1 ? " document, " : " documents, ") + std::to_string(failed_) +
                     " failed, in " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s");
    }

private:
    RecordPrinter& printer_;
    const RunOptions& options_;
    ProgressLine progress_;
    Output output_;
    std::size_t done_ = 0;
    std::size_t failed_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

template <class Sentences>
void PrintMissingWalls(const RunOptions& options, const Sentences& missing) {
    if (!options.verbose) return;
    for (const std::string& sentence : missing) PrintMessage(sentence);
}

// All that would be printed if this document failed.
LastWords::Words WordsFor(const std::string& path, const NewPrinter& newPrinter, const std::string& reason) {
    const std::unique_ptr<RecordPrinter> printer = newPrinter();
    const DocumentRecord record{path, false, {}, reason, true};
    LastWords::Words words;
    words.output = printer->Head(false);
    words.output += printer->Record(record);
    words.output += printer->Tail();
    if (const std::string problem = printer->Problem(record); !problem.empty())
        words.message = MessageLine(path + ": " + problem);
    return words;
}

// Reads it in this process, unless it is a folder.
std::optional<int> RunAlone(const std::string& path, const RunOptions& options, const DocumentWorkers::Work& work,
                            const NewPrinter& newPrinter) {
    std::optional<LastWords> lastWords(
        std::in_place, options.workers.timeout,
        [&](const std::string& reason) { return WordsFor(path, newPrinter, reason); }, kExitSomeFailed);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) return std::nullopt;
    LimitMemory(options.workers.memory);
    PrintMissingWalls(options, Confine());
    std::vector<FoundDocument> documents;
    FindDocuments(path, documents);
    const DocumentRecord record = RecordWithinMemory(work, documents.front());
    lastWords.reset();
    const std::unique_ptr<RecordPrinter> printer = newPrinter();
    Run run(*printer, options, 1);
    run.Print(record);
    return run.Finish();
}

// Whether a folder was searched: then there are other documents than those that were named.
bool Searched(const std::vector<std::string>& paths, const std::vector<FoundDocument>& documents) {
    return !std::equal(paths.begin(), paths.end(), documents.begin(), documents.end(),
                       [](const std::string& path, const FoundDocument& document) { return path == document.path; });
}

int RunByWorkers(const std::vector<std::string>& paths, const RunOptions& options, DocumentWorkers& workers,
                 RecordPrinter& printer) {
    std::vector<FoundDocument> documents;
    std::vector<std::string> empty;
    workers.Find(paths, documents, empty);
    for (const std::string& folder : empty) PrintMessage(folder, "there are no documents in this folder");

    Run run(printer, options, documents.size());
    auto next = documents.begin();
    const auto source = [&](FoundDocument& document) {
        if (next == documents.end()) return false;
        document = std::move(*next++);
        return true;
    };
    const bool searched = Searched(paths, documents);
    workers.Run(source, [&run](const DocumentRecord& record) { return run.Print(record); });
    PrintMissingWalls(options, workers.MissingWalls());
    const int status = run.Finish();
    if (searched) run.PrintSums();
    return status;
}

}  // namespace

int RunDocuments(const DocumentPaths& named, const RunOptions& options, const DocumentWorkers::Work& work,
                 const NewPrinter& newPrinter) {
    if (named.files0From.empty() && named.paths.size() == 1) {
        if (const std::optional<int> status = RunAlone(named.paths[0], options, work, newPrinter)) return *status;
    }
    Result<DocumentWorkers> workers = DocumentWorkers::Start(work, options.workers);
    if (!workers) {
        PrintMessage(workers.Why().text);
        return kExitSomeFailed;
    }
    const Result<std::vector<std::string>> paths =
        named.files0From.empty() ? named.paths : ReadPathList(named.files0From);
    if (!paths) {
        PrintMessage(named.files0From, paths.Why().text);
        return kExitWrongUse;
    }
    return RunByWorkers(*paths, options, *workers, *newPrinter());
}

}  // namespace ZEMA
