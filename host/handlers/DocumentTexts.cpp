#include "host/handlers/DocumentTexts.h"

#include <string_view>

#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

std::string TextAt(const Value::Dictionary& attributes, std::string_view name) {
    const Value* const value = Find(attributes, name);
    const std::string* const text = value == nullptr ? nullptr : value->AsText();
    return text == nullptr ? "" : *text;
}

std::vector<std::string> TextsAt(const Value::Dictionary& attributes, std::string_view name) {
    std::vector<std::string> texts;
    const Value* const value = Find(attributes, name);
    if (value == nullptr || value->AsList() == nullptr) return texts;
    for (const Value& each : *value->AsList()) {
        if (each.AsText() != nullptr) texts.push_back(*each.AsText());
    }
    return texts;
}

std::vector<std::string> DescriptionsOf(const Value::Dictionary& attributes) {
    std::vector<std::string> texts;
    const Value* const value = Find(attributes, "kMDItemDescription");
    if (value == nullptr || value->AsDictionary() == nullptr) return texts;
    for (const auto& [language, text] : *value->AsDictionary()) {
        if (text.AsText() != nullptr && !text.AsText()->empty()) texts.push_back(*text.AsText());
    }
    return texts;
}

std::string StemOf(const std::string& path) {
    const std::string name = NameOf(path);
    return ReplaceInvalidUtf8(name.substr(0, name.rfind('.')));
}

}  // namespace

DocumentTexts TextsOf(const DocumentRecord& record) {
    DocumentTexts texts;
    texts.version = TextAt(record.attributes, "kMDItemVersion");
    texts.creator = TextAt(record.attributes, "kMDItemCreator");
    texts.authors = TextsAt(record.attributes, "kMDItemAuthors");
    texts.keywords = TextsAt(record.attributes, "kMDItemKeywords");
    texts.descriptions = DescriptionsOf(record.attributes);
    texts.designs = TextsAt(record.attributes, "com_zema_wqf_listofbricks");
    const Value* const count = Find(record.attributes, "com_zema_wqf_numberofbricks");
    if (count != nullptr) texts.brickCount = std::get<std::int64_t>(count->content);
    if (!texts.descriptions.empty()) {
        const std::string& first = texts.descriptions.front();
        texts.title = first.substr(0, first.find('\n'));
    }
    if (texts.title.empty()) texts.title = StemOf(record.path);
    return texts;
}

}  // namespace ZEMA
