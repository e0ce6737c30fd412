// Finds and reads documents in processes of their own.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "host/documents/DocumentRecord.h"
#include "host/system/Failure.h"
#include "host/workers/WorkerOptions.h"

namespace ZEMA {

class WorkerPool;

// Has documents read by processes that can do nothing but read, so that none of them can harm the others, the program
// or the user. A worker that crashes, or takes too much time or memory, costs the document that it was at; its record
// says so, and that the failure is `passing` where another try may end otherwise. What waited behind it is read by
// another worker.
//
// Start it before anything else is opened: workers are copies of the program as it was then, with the plug-in loaded
// and the work chosen. They start when there is something to do, and stay for the next call.
//
// Ownership: workers have what the work refers to as it was at the start. They end with this, or with the process.
// Threads:   one at a time, and always the one that started it: the system ends the workers when that thread ends.
class DocumentWorkers {
public:
    // What a worker does with a document.
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

    // Reads documents. Their records come in the same order, each as soon as all before it have come. `source` is
    // called some documents ahead.
    void Run(const Source& source, const Sink& sink);

    // Reads one document, as services want it that ask for one after the other.
    DocumentRecord Read(const FoundDocument& document);

    // What could not be put up around the workers so far, in sentences; see Confine.
    const std::set<std::string>& MissingWalls() const;

private:
    explicit DocumentWorkers(std::unique_ptr<WorkerPool> pool);

    std::unique_ptr<WorkerPool> pool_;
};

// What a worker makes of a document: the work's record or, of a failure at the limit of the memory, that.
DocumentRecord RecordWithinMemory(const DocumentWorkers::Work& work, const FoundDocument& document);

}  // namespace ZEMA
