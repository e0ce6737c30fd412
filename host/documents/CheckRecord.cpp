#include "host/documents/CheckRecord.h"

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

void WriteAttempt(const LoadAttempt& attempt, JsonWriter& json) {
    json.BeginObject();
    json.Number("format", attempt.format);
    json.Bool("loaded", attempt.loaded);
    json.Number("errorMask", attempt.errorMask);
    json.Key("errors");
    json.BeginArray();
    for (const std::string& error : attempt.errors) json.Text(error);
    json.EndArray();
    if (!attempt.reason.empty()) json.Text("reason", attempt.reason);
    json.EndObject();
}

std::string Line(const std::string& text) {
    return EscapeControls(ReplaceInvalidUtf8(text)) + "\n";
}

std::string AttemptText(const LoadAttempt& attempt) {
    const std::string start = "  format " + std::to_string(attempt.format) + ": ";
    std::string text;
    for (const std::string& error : attempt.errors) text += Line(start + error);
    if (!attempt.reason.empty()) text += Line(start + attempt.reason);
    if (text.empty() && !attempt.loaded) text = Line(start + "the model is not complete, and no error is named");
    return text;
}

}  // namespace

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
    if (!check.reason.empty()) json.Text("reason", check.reason);
    json.EndObject();
}

std::string CheckText(const std::string& path, const DocumentCheck& check) {
    if (check.loaded) return Line(path + ": loaded, format " + check.version) + AttemptText(check.attempts.back());
    std::string text = Line(path + ": not loaded");
    for (const LoadAttempt& attempt : check.attempts) text += AttemptText(attempt);
    if (!check.reason.empty()) text += Line("  " + check.reason);
    return text;
}

}  // namespace ZEMA
