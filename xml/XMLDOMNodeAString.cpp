#include "xml/XMLDOMNodeAString.h"

#include "core/ReleaseDeep.h"

namespace ZEMA {

// In a loop, since elements may nest deeper than the stack.
XMLDOMNodeAString::~XMLDOMNodeAString() {
    if (children.Empty()) return;  // as most elements are
    ReleaseDeep(children, [](XMLDOMNodeAString& node) { return &node.children; });
}

const AString* XMLDOMNodeAString::FindAttribute(std::string_view attributeName) const {
    for (const auto& attribute : attributes) {
        if (attribute.first == attributeName) return &attribute.second;
    }
    return nullptr;
}

bool XMLDOMNodeAString::GetAttribute(const AString& attributeName, AString& value) const {
    const AString* const found = FindAttribute(attributeName.View());
    if (found == nullptr) return false;
    value = *found;
    return true;
}

bool XMLDOMNodeAString::GetAttribute(const AString& attributeName, String& value) const {
    const AString* const found = FindAttribute(attributeName.View());
    if (found == nullptr) return false;
    value = FromUtf8(found->View());
    return true;
}

void XMLDOMNodeAString::SetAttribute(const AString& attributeName, const AString& value) {
    for (auto& attribute : attributes) {
        if (attribute.first == attributeName) {
            attribute.second = value;
            return;
        }
    }
    attributes.PushBack({attributeName, value});
}

XMLDOMNodeAString* XMLDOMNodeAString::FindChild(const AString& childName) const {
    for (const auto& child : children) {
        if (child->name == childName) return child.Get();
    }
    return nullptr;
}

AString XMLDOMNodeAString::GetText() const {
    if (textLines.Size() == 1) return textLines[0];  // the usual case shares the line instead of copying it
    AString text;
    for (const AString& line : textLines) {
        if (&line != textLines.begin()) text.Append("\n", 1);
        text.Append(line);
    }
    return text;
}

void XMLDOMNodeAString::GetText(String& text) const {
    text = FromUtf8(GetText().View());
}

void XMLDOMNodeAString::GetName(String& text) const {
    text = FromUtf8(name.View());
}

void XMLDOMNodeAString::Empty() {
    name.Clear();
    attributes.Clear();
    ReleaseDeep(children, [](XMLDOMNodeAString& node) { return &node.children; });
    textLines.Clear();
}

}  // namespace ZEMA
