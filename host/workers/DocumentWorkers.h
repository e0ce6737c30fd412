// Finds and reads documents in processes of their own.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "host/documents/DocumentRecord.h"
#include "host/system/Failure.h"

namespace ZEMA {

// How many workers there may be, and what each is held to.
struct WorkerOptions {
    unsigned jobs = 0;  // 0: one for each processor, as soon as more than a handful of documents wait
    std::chrono::milliseconds timeout = std::chrono::seconds(60);  // for a document
    std::uint64_t memory = std::uint64_t{2} << 30;  // bytes above what a worker has before its first document
};

// Has documents read by processes that can do nothing but read, so that none of them can harm the others, the program
// or the user. A worker that crashes, or takes too much time or memory, costs the document that it was at; its record
// says so, and that the failure is `passing` where another try may end otherwise. What waited behind it is read by
// another worker.
//
// Start it before anything else is opened: workers are copies of the program as it was then, with the plug-in loaded
// and the work chosen. They start when there is something to do, and stay for the next call.
//
// Ownership: the work, and what it refers to, must outlive this. Workers end with it, or with the process.
// Threads:   one at a time, and always the one that started it.
class DocumentWorkers {
public:
    // What a worker does with a document. Exceptions end as reasons. What it writes to is its own copy.
    using Work = std::function<DocumentRecord(const FoundDocument& document)>;
    // Puts the next document into `document`; false behind the last one.
    using Source = std::function<bool(FoundDocument& document)>;
    // Takes a record; false when no more are wanted.
    using Sink = std::function<bool(DocumentRecord record)>;

    static Result<DocumentWorkers> Start(Work work, const WorkerOptions& options);

    DocumentWorkers(DocumentWorkers&&) noexcept;
    ~DocumentWorkers();

    // Appends what the paths stand for (FindDocuments), in their order; a folder in which nothing was found goes to
    // `empty` instead. One whose file system does not answer is a document with a failure.
    void Find(const std::vector<std::string>& paths, std::vector<FoundDocument>& documents,
              std::vector<std::string>& empty);

    // Reads documents as they are asked for. Their records come in the same order, each as soon as all before it have
    // come. `source` is called some documents ahead.
    void Run(const Source& source, const Sink& sink);

    // Reads one document, as services want it that ask for one after the other.
    DocumentRecord Read(const FoundDocument& document);

private:
    explicit DocumentWorkers(Work work, const WorkerOptions& options);

    Work work_;
    WorkerOptions options_;
};

}  // namespace ZEMA
