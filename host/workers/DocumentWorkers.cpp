#include "host/workers/DocumentWorkers.h"

#include <deque>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>

#include "host/workers/Frames.h"
#include "host/workers/MemoryLimit.h"
#include "host/workers/WorkerPool.h"

namespace ZEMA {

namespace {

// The first byte of a request.
constexpr char kFind = 'f';
constexpr char kRead = 'r';

// A worker that is killed costs a document, but must not cost a whole folder.
constexpr int kTriesToFind = 3;

const Failure kNonsense = {FailureKind::Damaged, "the worker that read it went wrong"};

std::string Answer(const DocumentWorkers::Work& work, std::string_view request,
                   const std::function<void()>& stillThere) {
    if (request.starts_with(kFind)) {
        std::vector<FoundDocument> found;
        FindDocuments(std::string(request.substr(1)), found, stillThere);
        return EncodeDocuments(found);
    }
    const std::optional<std::vector<FoundDocument>> documents = DecodeDocuments(request.substr(1));
    return EncodeRecord(RecordWithinMemory(work, documents.value().front()));
}

std::vector<FoundDocument> FoundIn(const std::string& path, const WorkerOutcome& outcome) {
    if (outcome.loss) return {{path, outcome.loss}};
    std::optional<std::vector<FoundDocument>> found = DecodeDocuments(outcome.answer);
    return found ? std::move(*found) : std::vector<FoundDocument>{{path, kNonsense}};
}

DocumentRecord RecordIn(const std::string& path, const WorkerOutcome& outcome) {
    if (outcome.loss) return {path, false, {}, outcome.loss.text, outcome.passing};
    std::optional<DocumentRecord> record = DecodeRecord(outcome.answer);
    if (!record) return {path, false, {}, kNonsense.text, false};
    record->path = path;
    return std::move(*record);
}

}  // namespace

DocumentRecord RecordWithinMemory(const DocumentWorkers::Work& work, const FoundDocument& document) {
    DocumentRecord record = work(document);
    if (record.imported || !MemoryWasShort()) return record;
    record.error = "memory was short: " + record.error;
    record.passing = true;
    return record;
}

Result<DocumentWorkers> DocumentWorkers::Start(Work work, const WorkerOptions& options) {
    const auto answer = [work = std::move(work)](std::string_view request, const std::function<void()>& stillThere) {
        return Answer(work, request, stillThere);
    };
    auto pool = std::make_unique<WorkerPool>(answer, options);
    if (!pool->IsOpen()) return Failure{FailureKind::System, "no process for workers can be started"};
    return DocumentWorkers(std::move(pool));
}

DocumentWorkers::DocumentWorkers(std::unique_ptr<WorkerPool> pool) : pool_(std::move(pool)) {}

DocumentWorkers::DocumentWorkers(DocumentWorkers&&) noexcept = default;

DocumentWorkers::~DocumentWorkers() = default;

void DocumentWorkers::Find(const std::vector<std::string>& paths, std::vector<FoundDocument>& documents,
                           std::vector<std::string>& empty) {
    std::vector<std::vector<FoundDocument>> found(paths.size());
    std::vector<std::size_t> open(paths.size());
    std::iota(open.begin(), open.end(), 0u);
    for (int tries = kTriesToFind; tries > 0 && !open.empty(); --tries) {
        std::vector<std::size_t> again;
        auto next = open.begin();
        auto current = open.begin();
        const auto source = [&](WorkerTask& task) {
            if (next == open.end()) return false;
            task = {kFind + paths[*next], paths[*next]};
            ++next;
            return true;
        };
        const auto sink = [&](const WorkerOutcome& outcome) {
            const std::size_t place = *current++;
            const bool killed = outcome.loss.kind == FailureKind::System && tries > 1;
            if (killed) again.push_back(place);
            if (!killed) found[place] = FoundIn(paths[place], outcome);
            return true;
        };
        pool_->Run(source, sink);
        open = std::move(again);
    }
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (found[i].empty()) empty.push_back(paths[i]);
        std::move(found[i].begin(), found[i].end(), std::back_inserter(documents));
    }
}

void DocumentWorkers::Run(const Source& source, const Sink& sink) {
    std::deque<std::string> paths;  // of the documents that are out
    const auto nextTask = [&](WorkerTask& task) {
        FoundDocument document;
        if (!source(document)) return false;
        task = {kRead + EncodeDocuments({document}), document.path};
        paths.push_back(std::move(document.path));
        return true;
    };
    const auto take = [&](const WorkerOutcome& outcome) {
        const std::string path = std::move(paths.front());
        paths.pop_front();
        return sink(RecordIn(path, outcome));
    };
    pool_->Run(nextTask, take);
}

DocumentRecord DocumentWorkers::Read(const FoundDocument& document) {
    DocumentRecord result;
    bool given = false;
    const auto source = [&](FoundDocument& next) {
        if (given) return false;
        given = true;
        next = document;
        return true;
    };
    const auto sink = [&](DocumentRecord record) {
        result = std::move(record);
        return true;
    };
    Run(source, sink);
    return result;
}

const std::set<std::string>& DocumentWorkers::MissingWalls() const {
    return pool_->MissingWalls();
}

}  // namespace ZEMA
