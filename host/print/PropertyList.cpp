#include "host/print/PropertyList.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

namespace {

// A list is read by recursion, so its depth is bounded; those of bundles have five levels.
constexpr int kDeepestList = 32;

std::string TextOf(const XMLDOMNodeAString& node) {
    return std::string(node.GetText().View());
}

Failure Fault(const std::string& text) {
    return {FailureKind::Damaged, text};
}

Result<Value> Read(const XMLDOMNodeAString& node, int depth);

Result<Value> ReadArray(const XMLDOMNodeAString& node, int depth) {
    Value::List list;
    for (const RefPointer<XMLDOMNodeAString>& child : node.children) {
        Result<Value> value = Read(*child, depth);
        if (!value) return value;
        list.push_back(std::move(*value));
    }
    return Value{std::move(list)};
}

// Elements in pairs: a key, and the value behind it.
Result<Value> ReadDictionary(const XMLDOMNodeAString& node, int depth) {
    Value::Dictionary dictionary;
    for (std::size_t i = 0; i < node.children.Size(); i += 2) {
        if (!(node.children[i]->name == "key")) return Fault("a dictionary holds a value without a key");
        std::string key = TextOf(*node.children[i]);
        if (i + 1 == node.children.Size() || node.children[i + 1]->name == "key") {
            return Fault("the key '" + key + "' has no value");
        }
        Result<Value> value = Read(*node.children[i + 1], depth);
        if (!value) return value;
        dictionary.push_back({std::move(key), std::move(*value)});
    }
    return Value{std::move(dictionary)};
}

Result<Value> ReadInteger(const XMLDOMNodeAString& node) {
    const std::string text = TextOf(node);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return Fault("'" + text + "' is no integer");
    return Value{number};
}

Result<Value> Read(const XMLDOMNodeAString& node, int depth) {
    if (node.name == "string") return Value{TextOf(node)};
    if (node.name == "integer") return ReadInteger(node);
    if (node.name == "true") return Value{true};
    if (node.name == "false") return Value{false};
    if (depth == kDeepestList) return Fault("it is nested too deeply");
    if (node.name == "array") return ReadArray(node, depth + 1);
    if (node.name == "dict") return ReadDictionary(node, depth + 1);
    return Fault("it holds an element <" + std::string(node.name.View()) + ">, which is not understood");
}

// Whether XML 1.0 can hold the character that starts at `utf8[i]` (its production 2): no control characters but tab,
// line feed and carriage return, and neither U+FFFE nor U+FFFF.
bool XmlHolds(std::string_view utf8, std::size_t i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if (byte < 0x20) return byte == '\t' || byte == '\n' || byte == '\r';
    const std::string_view three = utf8.substr(i, 3);
    return three != "\xEF\xBF\xBE" && three != "\xEF\xBF\xBF";
}

void AppendText(std::string_view utf8, std::string& text) {
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (!XmlHolds(utf8, i)) {
            if (static_cast<unsigned char>(utf8[i]) >= 0x20) i += 2;
            continue;
        }
        switch (utf8[i]) {
            case '&':
                text += "&amp;";
                break;
            case '<':
                text += "&lt;";
                break;
            case '>':
                text += "&gt;";
                break;
            case '\r':
                text += "&#13;";
                break;  // as it is, a reader would take it for a line feed
            default:
                text += utf8[i];
        }
    }
}

void AppendElement(const char* name, std::string_view content, std::string& text) {
    text.append("<").append(name).append(">");
    AppendText(content, text);
    text.append("</").append(name).append(">\n");
}

std::string RealText(double number) {
    if (std::isnan(number)) return "nan";
    if (std::isinf(number)) return number > 0 ? "+infinity" : "-infinity";
    char digits[32];
    const auto result = std::to_chars(std::begin(digits), std::end(digits), number);
    return std::string(std::begin(digits), result.ptr);
}

// Writes one kind of value; the lines of a list's or dictionary's content stand one tab further in.
struct ValueWriter {
    std::size_t depth;
    std::string& text;

    void Indent(std::size_t level) const { text.append(level, '\t'); }

    void operator()(const std::string& value) const { AppendElement("string", value, text); }
    void operator()(std::int64_t value) const { AppendElement("integer", std::to_string(value), text); }
    void operator()(double value) const { AppendElement("real", RealText(value), text); }
    void operator()(bool value) const { text += value ? "<true/>\n" : "<false/>\n"; }
    void operator()(const Value::List& values) const {
        text += "<array>\n";
        for (const Value& value : values) AppendPropertyListValue(value, depth + 1, text);
        Indent(depth);
        text += "</array>\n";
    }
    void operator()(const Value::Dictionary& values) const {
        text += "<dict>\n";
        for (const auto& [key, value] : values) {
            Indent(depth + 1);
            AppendElement("key", key, text);
            AppendPropertyListValue(value, depth + 1, text);
        }
        Indent(depth);
        text += "</dict>\n";
    }
};

}  // namespace

Result<Value> ReadPropertyList(std::string_view text) {
    const RefPointer<XMLDOMAString> document = New<XMLDOMAString>();
    if (text.size() >= npos ||
        !document->Parse(AString(text.data(), static_cast<std::uint32_t>(text.size())), nullptr)) {
        return Fault("it is not well-formed XML");
    }
    if (!(document->name == "plist") || document->children.Size() != 1) return Fault("it is no property list");
    return Read(*document->children[0], 0);
}

std::string PropertyListHead() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n";
}

void AppendPropertyListValue(const Value& value, std::size_t depth, std::string& text) {
    text.append(depth, '\t');
    std::visit(ValueWriter{depth, text}, value.content);
}

std::string PropertyListTail() {
    return "</plist>\n";
}

}  // namespace ZEMA
