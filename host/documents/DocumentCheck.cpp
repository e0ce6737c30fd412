#include "host/documents/DocumentCheck.h"

#include "host/documents/DocumentPath.h"
#include "host/documents/FailureReason.h"
#include "host/system/Utf8Text.h"
#include "importer/DocumentLoad.h"
#include "importer/StorageSession.h"
#include "platform/Foundation/NSAutoreleasePool.h"

namespace ZEMA {

namespace {

// Fails when the loaders could not be asked; what they answer stands in the attempts.
Failure Load(const std::string& path, std::uint32_t options, DocumentCheck& check, RefPointer<StorageScene2>* scene) {
    if (KindOfDocument(path) == DocumentKind::EmptyFile) return {FailureKind::WrongKind, "it is empty"};
    const Foundation::NSAutoreleasePool pool;
    const Result<DocumentPath> whole = DocumentPath::Of(path);
    if (!whole) return whole.Why();
    DocumentLoad load(options, &check.attempts);
    const StorageSession storage(StorageSession::Purpose::Reading);
    if (!storage.Ready()) return {FailureKind::Limit, "the storage tree is not available"};
    check.loaded = load.Run(StoragePathOf(whole->Text()));
    if (!check.loaded) return {};
    String version;
    load.MarkupVersion().AppendTo(version);
    check.version = version.ToAString().View();
    if (scene != nullptr) *scene = load.SharedScene();
    return {};
}

void WriteAttempt(const LoadAttempt& attempt, JsonWriter& json) {
    json.BeginObject();
    json.Number("format", attempt.format);
    json.Bool("loaded", attempt.loaded);
    json.Number("errorMask", attempt.errorMask);
    json.Key("errors");
    json.BeginArray();
    for (const std::string& error : attempt.errors) json.Text(error);
    json.EndArray();
    if (attempt.reason) json.Text("reason", *attempt.reason);
    json.EndObject();
}

std::string Line(const std::string& text) {
    return EscapeControls(ReplaceInvalidUtf8(text)) + "\n";
}

std::string AttemptText(const LoadAttempt& attempt) {
    const std::string start = "  format " + std::to_string(attempt.format) + ": ";
    std::string text;
    for (const std::string& error : attempt.errors) text += Line(start + error);
    if (attempt.reason) text += Line(start + *attempt.reason);
    if (text.empty() && !attempt.loaded) text = Line(start + "the model is not complete, and no error is named");
    return text;
}

}  // namespace

DocumentCheck CheckDocument(const std::string& path, std::uint32_t options, RefPointer<StorageScene2>* scene) {
    DocumentCheck check;
    try {
        check.failure = Load(path, options, check, scene);
        if (!check.loaded && !check.failure) check.failure = WhyNotLoaded(path, check.attempts);
    } catch (...) {
        check.loaded = false;
        check.failure = {FailureKind::Limit, ReasonOfException()};
    }
    return check;
}

bool LoadedWithoutError(const DocumentCheck& check) {
    return check.loaded && check.attempts.back().errors.empty();
}

std::vector<std::string> ReasonsOf(const DocumentCheck& check) {
    std::vector<std::string> reasons = {check.failure.text};
    if (check.attempts.empty()) return reasons;
    const std::vector<std::string>& errors = ClaimedAttempt(check.attempts).errors;
    reasons.insert(reasons.end(), errors.begin(), errors.end());
    return reasons;
}

Failure WhyNotImported(const std::string& path) {
    const DocumentCheck check = CheckDocument(path);
    if (check.loaded) return {FailureKind::Limit, "the plug-in did not import it and does not say why"};
    const std::vector<std::string> reasons = ReasonsOf(check);
    Failure failure = check.failure;
    if (reasons.size() > 1) failure.text += " (" + reasons[1];
    if (reasons.size() > 2) failure.text += ", and " + std::to_string(reasons.size() - 2) + " more";
    if (reasons.size() > 1) failure.text += ")";
    return failure;
}

void WriteCheck(const std::string& path, const DocumentCheck& check, JsonWriter& json) {
    json.BeginObject();
    json.Path("path", path);
    json.Bool("loaded", check.loaded);
    json.Key("version");
    if (check.loaded) {
        json.Text(check.version);
    } else {
        json.Null();
    }
    json.Key("attempts");
    json.BeginArray();
    for (const LoadAttempt& attempt : check.attempts) WriteAttempt(attempt, json);
    json.EndArray();
    if (check.failure) json.Text("reason", check.failure.text);
    json.EndObject();
}

std::string CheckText(const std::string& path, const DocumentCheck& check) {
    if (check.loaded) return Line(path + ": loaded, format " + check.version) + AttemptText(check.attempts.back());
    std::string text = Line(path + ": not loaded") + Line("  " + check.failure.text);
    if (check.attempts.empty()) return text;
    const LoadAttempt& claimed = ClaimedAttempt(check.attempts);
    text += AttemptText(claimed);
    for (const LoadAttempt& attempt : check.attempts) {
        if (&attempt != &claimed) text += AttemptText(attempt);
    }
    return text;
}

}  // namespace ZEMA
