#include "tools/wqf/DocumentCommands.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/documents/DocumentCheck.h"
#include "host/documents/DocumentFinder.h"
#include "host/documents/DocumentRecord.h"
#include "host/plugin/Bundle.h"
#include "host/plugin/PluginHost.h"
#include "host/print/CatalogueJson.h"
#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "host/system/Output.h"
#include "host/system/Paths.h"
#include "tools/wqf/ExitStatus.h"

namespace ZEMA {

namespace {

// All documents in order, with a message for each folder that has none. Null, with a message, when the list of paths
// cannot be read.
std::optional<std::vector<FoundDocument>> FindNamedDocuments(const DocumentPaths& named) {
    const Result<std::vector<std::string>> paths =
        named.files0From.empty() ? named.paths : ReadPathList(named.files0From);
    if (!paths) {
        PrintMessage(named.files0From, paths.Why().text);
        return std::nullopt;
    }
    std::vector<FoundDocument> documents;
    for (const std::string& path : *paths) {
        if (!FindDocuments(path, documents)) PrintMessage(path, "there are no documents in this folder");
    }
    return documents;
}

}  // namespace

namespace {

Result<PluginHost> LoadPlugin(const std::string& given) {
    const Result<std::string> bundle = FindBundle(given);
    if (!bundle) return bundle.Why();
    return PluginHost::Load(*bundle);
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
    Result<PluginHost> host = LoadPlugin(options.bundle);
    if (!host) {
        PrintMessage(host.Why().text);
        return kExitWrongUse;
    }

    const std::unique_ptr<RecordWriter> writer = NewRecordWriter(options.format, documents->size() > 1);
    Output output;
    output.Write(writer->Head());
    const std::size_t failed = ImportAll(*host, *documents, *writer, output);
    output.Write(writer->Tail());

    if (const Failure failure = host->Close()) {
        PrintMessage(failure.text);
        return kExitSomeFailed;
    }
    if (output.Failed()) return ExitStatusOf(output);
    return failed == 0 ? kExitDone : kExitSomeFailed;
}

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

namespace {

void WriteDocument(const std::string& path, const DocumentCheck& check, const StorageScene2* scene, JsonWriter& json) {
    json.BeginObject();
    json.Text("path", path);
    json.Key("version");
    if (scene != nullptr) {
        json.Text(check.version);
        json.Key("scene");
        WriteScene(*scene, json);
    } else {
        json.Null();
        json.Key("scene");
        json.Null();
    }
    json.EndObject();
}

void PrintReasons(const std::string& path, const DocumentCheck& check) {
    const Failure failure = LeadsIntoFile(path) ? Failure() : CheckRegularFile(path);
    if (failure) PrintMessage(path, failure.text);
    for (const std::string& reason : ReasonsOf(check)) PrintMessage(path, reason);
}

}  // namespace

int RunScene(const SceneOptions& options) {
    RefPointer<StorageScene2> scene;
    const DocumentCheck check = CheckDocument(options.path, options.loaderOptions, &scene);
    Output output;
    JsonWriter json([&output](std::string_view piece) { return output.Write(piece); });
    WriteDocument(options.path, check, scene.Get(), json);
    json.Finish();
    const bool loaded = scene != nullptr;
    scene = nullptr;
    if (!loaded) PrintReasons(options.path, check);
    if (output.Failed()) return ExitStatusOf(output);
    return loaded ? kExitDone : kExitSomeFailed;
}

int RunCatalogue() {
    Output output;
    JsonWriter json([&output](std::string_view piece) { return output.Write(piece); });
    WriteCatalogue(json);
    json.Finish();
    return ExitStatusOf(output);
}

}  // namespace ZEMA
