// Cutting 8-bit text into pieces.
#pragma once

#include "core/AString.h"
#include "core/BasicArray.h"

namespace ZEMA {

// Replaces `pieces` by the runs of bytes between delimiters, untrimmed. Two delimiters in a row, or one at the start,
// give an empty piece; one at the end does not, and an empty text gives none.
void Split(const AString& text, char delimiter, BasicArray<AString>& pieces);

// Removes white space from both ends: space, tab, line feed, vertical tab, form feed, carriage return.
void Trim(AString& text);

}  // namespace ZEMA
