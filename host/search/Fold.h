// The words of a text as they are compared: without regard to case, width, and marks that many leave out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ZEMA {

// One word, and where it stands in the text that it comes from, in bytes.
struct FoldedWord {
    std::string text;
    std::size_t begin = 0;
    std::size_t end = 0;
};

// The words of a text in UTF-8, in order. Texts that are searched and queries both pass through here.
//
// Every character is replaced by its compatibility decomposition with its case folded; those that are ignorable by
// default (soft hyphens, joiners) go, and so do the marks behind a letter of the Latin, Greek, Cyrillic, Hebrew and
// Arabic scripts: there they are often left out in writing, elsewhere they make another letter. What remains is
// composed again. Words are letters, digits and marks, and end at anything else; each Han, kana or Hangul letter is a
// word of its own, because there nothing stands between the words.
std::vector<FoldedWord> FoldedWords(std::string_view utf8);

// The words of a text with a blank between each two.
std::string FoldedText(std::string_view utf8);

// How many columns a terminal takes for a text without control characters.
std::size_t ColumnsOf(std::string_view utf8);

}  // namespace ZEMA
