#include "host/handlers/KFileMetaDataHandler.h"

#include "host/print/JsonReader.h"
#include "host/print/JsonWriter.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

// Empty where the question names none.
std::string PathIn(const std::string& question) {
    const std::optional<Value> value = ReadJson(question);
    const Value::Dictionary* const object = value ? value->AsDictionary() : nullptr;
    const Value* const path = object == nullptr ? nullptr : Find(*object, "path");
    return path == nullptr || path->AsText() == nullptr ? "" : *path->AsText();
}

std::string Joined(const std::vector<std::string>& texts, const char* separator) {
    std::string all;
    for (const std::string& text : texts) {
        if (!text.empty()) all += (all.empty() ? "" : separator) + text;
    }
    return all;
}

void AddUnlessEmpty(const char* name, const std::string& text, Value::Dictionary& properties) {
    if (!text.empty()) properties.push_back({name, {text}});
}

Value::Dictionary PropertiesOf(const DocumentTexts& texts) {
    Value::Dictionary properties;
    properties.push_back({"typeInfo", {std::string("Document")}});
    properties.push_back({"title", {texts.title}});
    AddUnlessEmpty("author", Joined(texts.authors, ", "), properties);
    AddUnlessEmpty("keywords", Joined(texts.keywords, ", "), properties);
    AddUnlessEmpty("generator", texts.creator, properties);
    if (!texts.descriptions.empty()) properties.push_back({"description", {texts.descriptions.front()}});
    AddUnlessEmpty(
        "text",
        Joined({Joined(texts.descriptions, "\n"), Joined(texts.authors, "\n"), Joined(texts.designs, " ")}, "\n"),
        properties);
    return properties;
}

std::string Answer(const std::string& status, const std::string& error, const Value::Dictionary& properties) {
    const Value::Dictionary answer = {
        {"status", {status}}, {"error", {ReplaceInvalidUtf8(error)}}, {"properties", {properties}}};
    return JsonText({answer}) + "\n";
}

}  // namespace

std::string AnswerKFileMetaData(const std::string& question, const ReadDocument& read) {
    const std::string path = PathIn(question);
    if (path.empty()) return Answer("Error", "the question names no path", {});
    const DocumentRecord record = read(path);
    if (!record.imported) return Answer("Error", record.error, {});
    return Answer("OK", "", PropertiesOf(TextsOf(record)));
}

}  // namespace ZEMA
