#include "storage/PathComponents.h"

#include <utility>

namespace ZEMA {

void SplitPath(const String& path, BasicArray<String>& components) {
    path.Split('/', components);
}

void NormalizeComponents(BasicArray<String>& components) {
    std::size_t kept = 0;
    for (std::size_t index = 0; index < components.Size(); ++index) {
        String& component = components[index];
        if (IsSelfName(component)) continue;
        if (IsParentName(component) && kept > 0 && !IsParentName(components[kept - 1])) {
            --kept;
            continue;
        }
        if (kept != index) components[kept] = std::move(component);
        ++kept;
    }
    while (components.Size() > kept) components.PopBack();
}

bool IsSelfName(const String& component) {
    return component.Length() == 1 && component.CharAtIs(0, '.');
}

bool IsParentName(const String& component) {
    return component.Length() == 2 && component.CharAtIs(0, '.') && component.CharAtIs(1, '.');
}

bool IsPlainName(const String& name) {
    return !name.IsEmpty() && !IsSelfName(name) && !IsParentName(name) && name.Find('/') == npos;
}

}  // namespace ZEMA
