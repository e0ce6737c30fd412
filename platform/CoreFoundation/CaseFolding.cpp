#include "platform/CoreFoundation/CaseFolding.h"

#include <utf8proc.h>

namespace ZEMA::CF {
namespace {

// The framework's tables are older than utf8proc's: these it leaves alone.
bool IsUnknownToTheFramework(char32_t codePoint) {
    if (codePoint >= 0x1C80 && codePoint <= 0x1C88) return true;
    return codePoint == 0x2C2F || codePoint == 0xA7C0 || codePoint == 0xA7D0 || codePoint == 0xA7D6 ||
           codePoint == 0xA7D8;
}

// Unicode folds Cherokee to its capitals, the framework to its small letters; only the order against other letters
// tells the difference. Gives 0 for other letters.
char32_t FoldCherokee(char32_t codePoint) {
    if (codePoint >= 0x13A0 && codePoint <= 0x13EF) return codePoint - 0x13A0 + 0xAB70;
    if (codePoint >= 0x13F0 && codePoint <= 0x13F5) return codePoint + 8;
    const bool isSmall = (codePoint >= 0xAB70 && codePoint <= 0xABBF) || (codePoint >= 0x13F8 && codePoint <= 0x13FD);
    return isSmall ? codePoint : 0;
}

std::size_t Fold(char32_t codePoint, char32_t (&folded)[3]) {
    folded[0] = codePoint;
    if (IsUnknownToTheFramework(codePoint)) return 1;
    if (const char32_t letter = FoldCherokee(codePoint)) {
        folded[0] = letter;
        return 1;
    }
    utf8proc_int32_t found[3];
    int boundClass = 0;
    const utf8proc_ssize_t count =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(codePoint), found, 3, UTF8PROC_CASEFOLD, &boundClass);
    if (count < 1 || count > 3) return 1;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) folded[i] = static_cast<char32_t>(found[i]);
    return static_cast<std::size_t>(count);
}

}  // namespace

char32_t FoldedReader::Next() {
    if (nextPending_ < pendingCount_) return pending_[nextPending_++];
    if (position_ == text_.Length()) return kEndOfText;
    const UniChar unit = text_[position_++];
    if (unit < 0x80) return FoldAscii(unit);
    if (IsHighSurrogate(unit) && position_ < text_.Length() && IsLowSurrogate(text_[position_])) {
        return PairToCodePoint(unit, text_[position_++]);
    }
    if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) return unit;
    pendingCount_ = Fold(unit, pending_);
    nextPending_ = 1;
    return pending_[0];
}

}  // namespace ZEMA::CF
