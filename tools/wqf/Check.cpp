// wqf check: whether documents load, and what is wrong with them.

#include <optional>
#include <string>
#include <vector>

#include "host/documents/DocumentCheck.h"
#include "host/print/JsonWriter.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "tools/wqf/Commands.h"
#include "tools/wqf/NamedDocuments.h"

namespace ZEMA {

namespace {

std::string RecordOf(const std::string& path, const DocumentCheck& check, RecordFormat format, JsonSequence& sequence) {
    if (format == RecordFormat::Text) return CheckText(path, check);
    return sequence.Item(JsonOf([&](JsonWriter& json) { WriteCheck(path, check, json); }));
}

// The loaders call everything that they cannot read a path error; the system knows more.
void PrintProblem(const FoundDocument& document) {
    if (document.failure && !LeadsIntoFile(document.path)) PrintMessage(document.path, document.failure.text);
}

// Returns how many documents did not load without an error. Ends early when nobody takes the output any more.
std::size_t CheckAll(const std::vector<FoundDocument>& documents, const CheckOptions& options, JsonSequence& sequence,
                     Output& output) {
    ProgressLine progress(documents.size());
    std::size_t done = 0;
    std::size_t failed = 0;
    for (const FoundDocument& document : documents) {
        const DocumentCheck check = CheckDocument(document.path, options.loaderOptions);
        progress.Hide();
        if (!output.Write(RecordOf(document.path, check, options.format, sequence))) break;
        if (!check.loaded) PrintProblem(document);
        failed += LoadedWithoutError(check) ? 0u : 1u;
        progress.Show(++done, failed);
    }
    return failed;
}

}  // namespace

int RunCheck(const CheckOptions& options) {
    const std::optional<std::vector<FoundDocument>> documents = FindNamedDocuments(options.documents);
    if (!documents) return kExitWrongUse;
    JsonSequence sequence(options.format == RecordFormat::Json);
    Output output;
    const bool isText = options.format == RecordFormat::Text;
    if (!isText) output.Write(sequence.Head());
    const std::size_t failed = CheckAll(*documents, options, sequence, output);
    if (!isText) output.Write(sequence.Tail());
    if (output.Failed()) return ExitStatusOf(output);
    return failed == 0 ? kExitDone : kExitSomeFailed;
}

}  // namespace ZEMA
