#include "storage/MatchPattern.h"

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
