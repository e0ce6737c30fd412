// What counts as the same word in documents and queries.

#include "host/search/Fold.h"

#include <gtest/gtest.h>

namespace ZEMA::testing {

TEST(Fold, MakesTheSameWordsOfWhatReadersTakeForTheSame) {
    const struct {
        const char* what;
        const char* text;
        const char* folded;
    } rows[] = {
        {"case, fully folded", "STRASSE Straße \xEF\xAC\x81n", "strasse strasse fin"},
        {"a final sigma", "ΣΊΣΥΦΟΣ σίσυφος", "σισυφοσ σισυφοσ"},
        {"marks behind Latin letters, in any order", "Zoë Zoe\u0308 s\u0323\u0307 s\u0307\u0323", "zoe zoe s s"},
        {"Cyrillic, Hebrew and Arabic ones", "Ёлка שָׁלוֹם مُحَمَّد", "елка שלום محمد"},
        {"not those that make another letter", "ガラス カラス", "ガ ラ ス カ ラ ス"},
        {"nor those of other scripts", "हिन्दी", "हिन्दी"},
        {"width and other forms", "Ｃａｓｔｌｅ ｶﾞ ①½", "castle ガ 11 2"},
        {"letters without blanks between them", "大阪城a1 한글", "大 阪 城 a1 한 글"},
        {"syllables that come in letters", "\u1112\u1161\u11AB\u1100\u1173\u11AF", "한 글"},
        {"what cannot be seen", "Burg\u00ADtor\u200D", "burgtor"},
        {"all else ends a word", "d'Or_3062-4.5🏰x", "d or 3062 4 5 x"},
        {"bytes that are no characters",
         "a\xFF"
         "b\xE5\xA4",
         "a b"},
        {"nothing", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(FoldedText(row.text), row.folded);
        EXPECT_EQ(FoldedText(row.folded), row.folded) << "once more";
    }
}

TEST(Fold, KnowsWhereWordsStand) {
    const std::string text = "«Zoe\u0308» 大阪";
    std::vector<std::string> originals;
    for (const FoldedWord& word : FoldedWords(text))
        originals.push_back(text.substr(word.begin, word.end - word.begin));
    EXPECT_EQ(originals, (std::vector<std::string>{"Zoe\u0308", "大", "阪"}));
}

}  // namespace ZEMA::testing
