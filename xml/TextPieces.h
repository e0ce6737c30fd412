// Cutting 8-bit text into pieces.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/AString.h"
#include "core/BasicArray.h"

namespace ZEMA {

// Calls `visit(piece)` for each run of bytes between delimiters, untrimmed. Two delimiters in a row, or one at the
// start, give an empty piece; one at the end does not, and an empty text gives none.
template <class Visit>
void ForEachPiece(std::string_view text, char delimiter, Visit visit) {
    while (!text.empty()) {
        const std::size_t end = text.find(delimiter);
        visit(text.substr(0, end));
        if (end == std::string_view::npos) return;
        text.remove_prefix(end + 1);
    }
}

// Replaces `pieces` by them.
void Split(const AString& text, char delimiter, BasicArray<AString>& pieces);

// Removes white space from both ends: space, tab, line feed, vertical tab, form feed, carriage return.
std::string_view Trimmed(std::string_view text);
void Trim(AString& text);

}  // namespace ZEMA
