// What the commands over many documents have in common: finding them, having them read, and telling how far it is.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "host/system/Output.h"
#include "host/workers/DocumentWorkers.h"

namespace ZEMA {

// The paths themselves or a file that lists them, never both.
struct DocumentPaths {
    std::string files0From;
    std::vector<std::string> paths;
};

// How documents are read, and what is told beside the records.
struct RunOptions {
    WorkerOptions workers;
    bool quiet = false;    // neither progress nor sums
    bool verbose = false;  // walls that are missing
};

// Puts records into words as they come, for standard output and, where something is wrong, for standard error.
class RecordPrinter {
public:
    virtual ~RecordPrinter() = default;

    virtual std::string Head(bool several) = 0;
    virtual std::string Record(const DocumentRecord& record) = 0;
    virtual std::string Tail() = 0;
    virtual std::string Problem(const DocumentRecord& record) = 0;  // empty: none; without the path
};

// Reads documents with the work, and prints what the printer makes of the records. One document is read by this process
// itself, which is confined for good; several by workers. Returns the exit status.
int RunDocuments(const DocumentPaths& documents, const RunOptions& options, const DocumentWorkers::Work& work,
                 const std::function<std::unique_ptr<RecordPrinter>()>& newPrinter);

}  // namespace ZEMA
