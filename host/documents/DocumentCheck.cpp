#include "host/documents/DocumentCheck.h"

#include <filesystem>

#include "host/system/FileDescriptor.h"
#include "host/system/Utf8Text.h"
#include "importer/DocumentLoad.h"
#include "importer/StorageSession.h"
#include "platform/Foundation/NSAutoreleasePool.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

namespace {

// Fails when the loaders could not be asked; what they answer stands in the attempts.
Failure Load(const std::string& path, std::uint32_t options, DocumentCheck& check, RefPointer<StorageScene2>* scene) {
    const Foundation::NSAutoreleasePool pool;
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(path, error);
    if (error) return SystemFailure(error.value());
    const auto absolute = Foundation::StringWithFileSystemRepresentation(whole.string());
    if (!absolute) return {FailureKind::Unsupported, "the path is not UTF-8"};
    DocumentLoad load(options, &check.attempts);
    const StorageSession storage(StorageSession::Purpose::Reading);
    if (!storage.Ready()) return {FailureKind::Limit, "the storage tree is not available"};
    check.loaded = load.Run(StoragePathOf(absolute.Get()));
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
    } catch (...) {
        // An attempt that was under way has noted the reason itself.
        check.loaded = false;
        if (check.attempts.empty() || !check.attempts.back().reason)
            check.failure = {FailureKind::Limit, ReasonOfException()};
    }
    return check;
}

bool LoadedWithoutError(const DocumentCheck& check) {
    return check.loaded && check.attempts.back().errors.empty();
}

std::vector<std::string> ReasonsOf(const DocumentCheck& check) {
    if (check.failure) return {check.failure.text};
    if (check.attempts.empty()) return {"no loader was asked"};
    const LoadAttempt& last = check.attempts.back();
    if (last.reason) return {*last.reason};
    if (last.errors.empty()) return {"the model is not complete, and the loader names no error"};
    return last.errors;
}

std::string FailureReasonOf(const std::string& path) {
    if (const auto file = OpenRegularFile(path); !file) return file.Why().text;
    const DocumentCheck check = CheckDocument(path);
    if (check.loaded) return "the plug-in did not import it and does not say why";
    const std::vector<std::string> reasons = ReasonsOf(check);
    const std::size_t more = reasons.size() - 1;
    return reasons.front() + (more == 0 ? "" : " (and " + std::to_string(more) + " more)");
}

void WriteCheck(const std::string& path, const DocumentCheck& check, JsonWriter& json) {
    json.BeginObject();
    json.Text("path", path);
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
    std::string text = Line(path + ": not loaded");
    for (const LoadAttempt& attempt : check.attempts) text += AttemptText(attempt);
    if (check.failure) text += Line("  " + check.failure.text);
    return text;
}

}  // namespace ZEMA
