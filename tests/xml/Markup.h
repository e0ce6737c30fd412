// Markup as text, and the tree that it becomes.
#pragma once

#include <string>
#include <vector>

#include "core/RefPointer.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA::testing {

inline AString Bytes(const std::string& text) {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

template <class Texts>
std::vector<std::string> Strings(const Texts& texts) {
    std::vector<std::string> strings;
    for (const AString& text : texts) strings.emplace_back(text.View());
    return strings;
}

// "name=value" for each attribute.
inline std::vector<std::string> AttributesOf(const XMLDOMNodeAString& node) {
    std::vector<std::string> attributes;
    for (const auto& [name, value] : node.attributes) {
        attributes.push_back(std::string(name.View()) + "=" + std::string(value.View()));
    }
    return attributes;
}

inline bool IsEmpty(const XMLDOMNodeAString& node) {
    return node.name.IsEmpty() && node.attributes.Empty() && node.children.Empty() && node.textLines.Empty();
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
