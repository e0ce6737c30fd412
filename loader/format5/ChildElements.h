// Picking children out of an element by name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// The first child of that name, or null.
inline const XMLDOMNodeAString* FindSection(const XMLDOMNodeAString& root, const char* name) {
    return root.FindChild(AString(name));
}

inline std::size_t CountChildren(const XMLDOMNodeAString& node, std::string_view name) {
    return static_cast<std::size_t>(std::count_if(node.children.begin(), node.children.end(),
                                                  [&](const auto& child) { return child->name == name; }));
}

// Calls `read(child)` for every child of that name, in document order, also after one that failed. Whether all
// succeeded.
template <class Read>
bool ReadChildren(const XMLDOMNodeAString& node, std::string_view name, Read read) {
    bool succeeded = true;
    for (const auto& child : node.children) {
        if (child->name == name && !read(*child)) succeeded = false;
    }
    return succeeded;
}

}  // namespace ZEMA
