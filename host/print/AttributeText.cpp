#include "host/print/AttributeText.h"

#include <algorithm>
#include <charconv>

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

constexpr std::size_t kIndent = 4;

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\') quoted += '\\';
        quoted += unit;
    }
    return EscapeControls(quoted + "\"");
}

// Language codes stand bare, as long as that leaves no doubt where they end.
std::string KeyText(const std::string& key) {
    const bool plain = !key.empty() && std::all_of(key.begin(), key.end(), [](char unit) {
        return (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z') ||
               unit == '_';
    });
    return plain ? key : Quoted(key);
}

std::string TextOf(const Value& value, std::size_t indent);

// Puts one kind of value into words.
struct TextMaker {
    std::size_t indent;  // of the line that the value stands on

    std::string operator()(const std::string& value) const { return Quoted(value); }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(bool value) const { return value ? "1" : "0"; }
    std::string operator()(double value) const {
        char digits[32];
        return std::string(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
    }
    std::string operator()(const Value::List& values) const {
        std::string text = "(\n";
        for (const Value& value : values) {
            text.append(indent + kIndent, ' ').append(TextOf(value, indent + kIndent));
            text += &value == &values.back() ? "\n" : ",\n";
        }
        return text.append(indent, ' ') + ")";
    }
    std::string operator()(const Value::Dictionary& values) const {
        std::string text = "{\n";
        for (const auto& [key, value] : values) {
            text.append(indent + kIndent, ' ').append(KeyText(key)).append(" = ");
            text.append(TextOf(value, indent + kIndent)).append(";\n");
        }
        return text.append(indent, ' ') + "}";
    }
};

std::string TextOf(const Value& value, std::size_t indent) {
    return std::visit(TextMaker{indent}, value.content);
}

}  // namespace

std::string AttributeText(const Value::Dictionary& attributes) {
    std::vector<const Value::Dictionary::value_type*> sorted;
    std::size_t width = 0;
    for (const auto& attribute : attributes) {
        sorted.push_back(&attribute);
        width = std::max(width, attribute.key.size());
    }
    std::sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) { return a->key < b->key; });
    std::string text;
    for (const auto* attribute : sorted) {
        text.append(attribute->key).append(width - attribute->key.size(), ' ').append(" = ");
        text.append(TextOf(attribute->value, 0)).append("\n");
    }
    return text;
}

}  // namespace ZEMA
