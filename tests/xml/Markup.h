// Markup as text, and the tree that it becomes.
#pragma once

#include <string>

#include "core/RefPointer.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA::testing {

inline AString Bytes(const std::string& text) {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

// The whole tree: "name[attribute=value,...]'line|line'(child)(child)".
inline std::string Shape(const XMLDOMNodeAString& node) {
    std::string shape(node.name.View()), attributes, lines;
    for (const auto& [name, value] : node.attributes) {
        attributes.append(attributes.empty() ? "" : ",").append(name.View()).append("=").append(value.View());
    }
    for (const AString& line : node.textLines) lines.append(lines.empty() ? "" : "|").append(line.View());
    if (!attributes.empty()) shape += "[" + attributes + "]";
    if (!lines.empty()) shape += "'" + lines + "'";
    for (const auto& child : node.children) shape += "(" + Shape(*child) + ")";
    return shape;
}

// A document that was parsed, and whether that succeeded.
struct ParsedText {
    explicit ParsedText(const std::string& text, XMLDOMNodeAStringTester* tester = nullptr)
        : document(New<XMLDOMAString>()), succeeded(document->Parse(Bytes(text), tester)) {}

    XMLDOMNodeAString* operator->() const { return document.Get(); }
    XMLDOMNodeAString& operator*() const { return *document; }

    RefPointer<XMLDOMAString> document;
    bool succeeded;
};

inline std::string Repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

}  // namespace ZEMA::testing
