// Texts as code points without regard to case. Not for use outside of this library.
#pragma once

#include <cstddef>

#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {

inline constexpr char32_t kEndOfText = 0xFFFFFFFF;

inline char32_t FoldAscii(char32_t codePoint) {
    return codePoint - U'A' < 26 ? codePoint + (U'a' - U'A') : codePoint;
}

// Hands out the full default case folding (statuses C and F) of a text, one code point after the other. An unpaired
// surrogate stands for itself, and so does everything above U+FFFF: the framework folds nothing there.
class FoldedReader {
public:
    explicit FoldedReader(TextView text) : text_(text) {}

    char32_t Next();  // kEndOfText at the end

    // Whether the code points of one character have all been handed out, and where the next character starts.
    bool IsBetweenCharacters() const { return nextPending_ == pendingCount_; }
    std::size_t Position() const { return position_; }

private:
    static constexpr std::size_t kMaximumExpansion = 3;  // of one code point

    TextView text_;
    std::size_t position_ = 0;
    std::size_t pendingCount_ = 0;
    std::size_t nextPending_ = 0;
    char32_t pending_[kMaximumExpansion] = {};
};

}  // namespace ZEMA::CF
