#include "xml/TextPieces.h"

#include <cstdint>

#include "core/ByteText.h"

namespace ZEMA {

void Split(const AString& text, char delimiter, BasicArray<AString>& pieces) {
    const AString kept = text;  // `text` may be one of the pieces that go now
    pieces.Clear();
    ForEachPiece(kept.View(), delimiter, [&](std::string_view piece) {
        pieces.PushBack(AString(piece.data(), static_cast<std::uint32_t>(piece.size())));
    });
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsWhiteSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsWhiteSpace(text.back())) text.remove_suffix(1);
    return text;
}

void Trim(AString& text) {
    const std::string_view trimmed = Trimmed(text.View());
    if (trimmed.size() == text.Length()) return;
    text = AString(trimmed.data(), static_cast<std::uint32_t>(trimmed.size()));
}

}  // namespace ZEMA
