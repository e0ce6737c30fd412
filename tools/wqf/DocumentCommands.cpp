#include "tools/wqf/DocumentCommands.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/confinement/Confinement.h"
#include "host/documents/DocumentCheck.h"
#include "host/documents/DocumentRecord.h"
#include "host/documents/DocumentRepair.h"
#include "host/index/IndexSearch.h"
#include "host/plugin/PluginHost.h"
#include "host/print/CatalogueJson.h"
#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "host/system/Output.h"
#include "host/system/Utf8Text.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/QueryText.h"

namespace ZEMA {

namespace {

// The records of an import as they are printed.
class ImportPrinter : public RecordPrinter {
public:
    // `filterFailed` is set once the query can not be asked any more.
    ImportPrinter(const ImportOptions& options, const std::optional<Query>& where, bool& filterFailed)
        : options_(options), filterFailed_(filterFailed) {
        if (where) filter_.emplace(*where);
    }

    std::string Head(bool several) override {
        writer_ = NewRecordWriter(options_.format, several, options_.names);
        return writer_->Head();
    }
    std::string Record(const DocumentRecord& record) override {
        return filter_ && !filter_->Finds(record) ? std::string() : writer_->Record(record);
    }
    std::string Tail() override { return writer_->Tail(); }
    std::string Problem(const DocumentRecord& record) override {
        if (!filter_ || !filter_->Why()) return record.error;
        filterFailed_ = true;
        return "whether the query finds it is not known: " + filter_->Why().text;
    }

private:
    const ImportOptions& options_;
    bool& filterFailed_;
    std::optional<RecordFilter> filter_;
    std::unique_ptr<RecordWriter> writer_;
};

}  // namespace

int RunImport(const ImportOptions& options) {
    std::optional<Query> where;
    if (!options.where.empty() && !(where = ReadQuery(options.where))) return kExitWrongUse;
    if (options.repair) PrepareRepair();
    Result<PluginHost> host = LoadPlugin(options.bundle);
    if (!host) {
        PrintMessage(host.Why().text);
        return kExitWrongUse;
    }
    bool filterFailed = false;
    const int status = RunDocuments(
        options.documents, options.run,
        [&host, &options](const FoundDocument& document) {
            return options.repair ? ImportRepaired(*host, document) : ImportDocument(*host, document);
        },
        [&options, &where, &filterFailed] { return std::make_unique<ImportPrinter>(options, where, filterFailed); });
    if (const Failure failure = host->Close()) {
        PrintMessage(failure.text);
        return kExitSomeFailed;
    }
    return status == kExitDone && filterFailed ? kExitSomeFailed : status;
}

namespace {

// A check travels in words, as attributes of a record that counts as imported where nothing is wrong.
constexpr const char* kText = "text";
constexpr const char* kProblem = "problem";

std::string TextOf(const std::string& path, const DocumentCheck& check, RecordFormat format) {
    if (format == RecordFormat::Text) return CheckText(path, check);
    return JsonOf([&](JsonWriter& json) { WriteCheck(path, check, json); });
}

DocumentRecord CheckToRecord(const FoundDocument& document, const CheckOptions& options) {
    const DocumentCheck check = CheckDocument(document.path, options.loaderOptions);
    DocumentRecord record{document.path, LoadedWithoutError(check), {}, {}};
    record.error = check.failure.text;
    record.attributes.push_back({kText, {TextOf(document.path, check, options.format)}});
    if (document.failure) record.attributes.push_back({kProblem, {ReplaceInvalidUtf8(document.failure.text)}});
    return record;
}

// Such records as they are printed.
class CheckPrinter : public RecordPrinter {
public:
    explicit CheckPrinter(RecordFormat format) : format_(format), sequence_(format == RecordFormat::Json) {}

    std::string Head(bool) override { return format_ == RecordFormat::Text ? "" : sequence_.Head(); }
    std::string Record(const DocumentRecord& record) override {
        const std::string text = Words(record);
        return format_ == RecordFormat::Text ? text : sequence_.Item(text);
    }
    std::string Tail() override { return format_ == RecordFormat::Text ? "" : sequence_.Tail(); }
    std::string Problem(const DocumentRecord& record) override {
        const Value* const problem = Find(record.attributes, kProblem);
        return problem != nullptr && problem->AsText() != nullptr ? *problem->AsText() : "";
    }

private:
    // Of a document that could not be checked, why.
    std::string Words(const DocumentRecord& record) const {
        const Value* const text = Find(record.attributes, kText);
        if (text != nullptr && text->AsText() != nullptr && !record.passing) return *text->AsText();
        DocumentCheck check;
        check.failure = {FailureKind::Limit, record.error};
        return TextOf(record.path, check, format_);
    }

    RecordFormat format_;
    JsonSequence sequence_;
};

}  // namespace

int RunCheck(const CheckOptions& options) {
    return RunDocuments(
        options.documents, options.run,
        [&options](const FoundDocument& document) { return CheckToRecord(document, options); },
        [&options] { return std::make_unique<CheckPrinter>(options.format); });
}

namespace {

void WriteDocument(const std::string& path, const DocumentCheck& check, const StorageScene2* scene, JsonWriter& json) {
    json.BeginObject();
    json.Path("path", path);
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
    for (const std::string& reason : ReasonsOf(check)) PrintMessage(path, reason);
}

}  // namespace

int RunScene(const SceneOptions& options) {
    Confine();
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
