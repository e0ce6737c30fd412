// Imports documents and prints what `wqf import --format ndjson` prints of them, all in this process: callgrind cannot
// follow into the confined workers that the command gives many documents to.
#include "host/documents/DocumentRecord.h"
#include "host/plugin/Bundle.h"
#include "host/system/Output.h"

using namespace ZEMA;

int main(int count, char** documents) {
    const Result<std::string> bundle = FindBundle("");
    if (!bundle) return 1;
    Result<PluginHost> host = PluginHost::Load(*bundle);
    if (!host) return 1;
    const auto writer = NewRecordWriter(RecordFormat::Ndjson, true);
    Output output;
    for (int index = 1; index < count; ++index) {
        const DocumentRecord record = ImportDocument(*host, {documents[index], {}});
        if (!record.imported || !output.Write(writer->Record(record))) return 1;
    }
    return host->Close() ? 1 : 0;
}
