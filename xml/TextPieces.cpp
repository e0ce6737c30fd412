#include "xml/TextPieces.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/ByteText.h"

namespace ZEMA {

void Split(const AString& text, char delimiter, BasicArray<AString>& pieces) {
    const AString kept = text;  // `text` may be one of the pieces that go now
    pieces.Clear();
    const std::string_view bytes = kept.View();
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = std::min(bytes.find(delimiter, start), bytes.size());
        pieces.PushBack(AString(bytes.data() + start, static_cast<std::uint32_t>(end - start)));
        start = end + 1;
    }
}

void Trim(AString& text) {
    const std::string_view bytes = text.View();
    std::uint32_t first = 0;
    std::uint32_t end = text.Length();
    while (first < end && IsWhiteSpace(bytes[first])) ++first;
    while (end > first && IsWhiteSpace(bytes[end - 1])) --end;
    if (end < text.Length()) text.Erase(end);
    if (first > 0) text.Erase(0, first);
}

}  // namespace ZEMA
