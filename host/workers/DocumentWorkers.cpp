#include "host/workers/DocumentWorkers.h"

#include <utility>

namespace ZEMA {

Result<DocumentWorkers> DocumentWorkers::Start(Work work, const WorkerOptions& options) {
    return DocumentWorkers(std::move(work), options);
}

DocumentWorkers::DocumentWorkers(Work work, const WorkerOptions& options) : work_(std::move(work)), options_(options) {}

DocumentWorkers::DocumentWorkers(DocumentWorkers&&) noexcept = default;

DocumentWorkers::~DocumentWorkers() = default;

void DocumentWorkers::Find(const std::vector<std::string>& paths, std::vector<FoundDocument>& documents,
                           std::vector<std::string>& empty) {
    for (const std::string& path : paths) {
        if (!FindDocuments(path, documents)) empty.push_back(path);
    }
}

void DocumentWorkers::Run(const Source& source, const Sink& sink) {
    for (FoundDocument document; source(document);) {
        if (!sink(work_(document))) return;
    }
}

DocumentRecord DocumentWorkers::Read(const FoundDocument& document) {
    return work_(document);
}

}  // namespace ZEMA
