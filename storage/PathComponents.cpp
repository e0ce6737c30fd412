#include "storage/PathComponents.h"

#include <utility>

namespace ZEMA {
namespace {

// How many units of the name at `position` are `text`, ignoring case; npos if they are not. Mostly as many as the text
// has, but folding maps some letters to several, up to three: "ß" in a name is matched by "ss".
std::uint32_t LengthOfMatch(const String& name, std::uint32_t position, const String& text) {
    const std::uint32_t length = text.Length();
    const std::uint32_t left = name.Length() - position;
    if (length <= left && name.EqualsNoCaseAt(position, length, text)) return length;
    const std::uint32_t most = length < left / 3 ? length * 3 : left;
    for (std::uint32_t count = length / 3; count <= most; ++count) {
        if (name.EqualsNoCaseAt(position, count, text)) return count;
    }
    return npos;
}

}  // namespace

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

bool MatchPattern(const String& name, const String& pattern) {
    std::uint32_t star = pattern.Find('*');
    if (star == npos) return name.EqualsNoCaseAt(0, npos, pattern);

    std::uint32_t position = LengthOfMatch(name, 0, String(pattern, 0, star));
    while (position != npos && star != npos) {
        const std::uint32_t begin = star + 1;
        star = pattern.Find('*', begin);
        const String segment(pattern, begin, star == npos ? npos : star - begin);
        if (segment.IsEmpty()) continue;
        const std::uint32_t found = name.FindNoCase(segment, position);
        if (found == npos) return false;
        const std::uint32_t length = LengthOfMatch(name, found, segment);
        if (length == npos) return false;
        position = found + length;
        if (star == npos) return position == name.Length();
    }
    return position != npos;
}

}  // namespace ZEMA
