// wqf import: what the plug-in says of documents.

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "host/documents/DocumentRecord.h"
#include "host/plugin/Bundle.h"
#include "host/plugin/PluginHost.h"
#include "host/system/Output.h"
#include "tools/wqf/Commands.h"
#include "tools/wqf/NamedDocuments.h"

namespace ZEMA {

namespace {

std::unique_ptr<PluginHost> LoadPlugin(const std::string& given) {
    std::string problem;
    const std::optional<std::string> bundle = FindBundle(given, problem);
    std::unique_ptr<PluginHost> host = bundle ? PluginHost::Load(*bundle, problem) : nullptr;
    if (!host) PrintMessage(problem);
    return host;
}

// Returns how many documents were not imported. Ends early when nobody takes the output any more.
std::size_t ImportAll(const PluginHost& host, const std::vector<FoundDocument>& documents, RecordWriter& writer,
                      Output& output) {
    ProgressLine progress(documents.size());
    std::size_t done = 0;
    std::size_t failed = 0;
    for (const FoundDocument& document : documents) {
        const DocumentRecord record = ImportDocument(host, document);
        progress.Hide();
        if (!output.Write(writer.Record(record))) break;
        if (!record.imported) PrintMessage(record.path, record.error);
        failed += record.imported ? 0 : 1;
        progress.Show(++done, failed);
    }
    return failed;
}

}  // namespace

int RunImport(const ImportOptions& options) {
    const std::optional<std::vector<FoundDocument>> documents = FindNamedDocuments(options.documents);
    if (!documents) return kExitWrongUse;
    const std::unique_ptr<PluginHost> host = LoadPlugin(options.bundle);
    if (!host) return kExitWrongUse;

    const std::unique_ptr<RecordWriter> writer = NewRecordWriter(options.format, documents->size() > 1);
    Output output;
    output.Write(writer->Head());
    const std::size_t failed = ImportAll(*host, *documents, *writer, output);
    output.Write(writer->Tail());

    std::string problem;
    if (!host->Close(problem)) {
        PrintMessage(problem);
        return kExitSomeFailed;
    }
    if (output.Failed()) return ExitStatusOf(output);
    return failed == 0 ? kExitDone : kExitSomeFailed;
}

}  // namespace ZEMA
