#include "host/search/Fold.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace ZEMA {

namespace {

constexpr auto kFolding = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT |
                                                         UTF8PROC_CASEFOLD | UTF8PROC_IGNORE);
constexpr auto kComposing = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);

// What stands in no word, in place of bytes that are no character.
constexpr utf8proc_int32_t kNoCharacter = ' ';

// A character of the decomposed text, with the bytes of the text that it comes from.
struct Unit {
    utf8proc_int32_t character;
    std::size_t begin;
    std::size_t end;
};

struct Range {
    utf8proc_int32_t first;
    utf8proc_int32_t last;
};

template <std::size_t count>
bool IsIn(const Range (&ranges)[count], utf8proc_int32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [=](const Range& range) { return character >= range.first && character <= range.last; });
}

// Blocks in which all letters are Latin, Greek, Cyrillic, Hebrew or Arabic (Unicode, Blocks.txt). Letters that
// decomposition replaces need no row.
constexpr Range kMarksAreOptional[] = {
    {0x0041, 0x02AF}, {0x0370, 0x052F}, {0x0590, 0x06FF}, {0x0750, 0x077F}, {0x0870, 0x08FF}, {0x1C80, 0x1C8F},
    {0x1D00, 0x1DBF}, {0x1E00, 0x1FFF}, {0x2C60, 0x2C7F}, {0xA640, 0xA69F}, {0xA720, 0xA7FF}, {0xAB30, 0xAB6F},
};

// Blocks of Han, kana and Hangul, the latter as its decomposition has it.
constexpr Range kStandAlone[] = {
    {0x1100, 0x11FF}, {0x2E80, 0x2FDF}, {0x3005, 0x3007}, {0x3021, 0x3029},   {0x3031, 0x3035},   {0x3038, 0x303C},
    {0x3041, 0x3096}, {0x309D, 0x309F}, {0x30A1, 0x30FF}, {0x31F0, 0x31FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA960, 0xA97F}, {0xAC00, 0xD7FF}, {0xF900, 0xFAFF}, {0x16FF0, 0x16FFF}, {0x1AFF0, 0x1B16F}, {0x20000, 0x3FFFF},
};

// The vowels and the final consonants of Hangul, which go on with a syllable.
constexpr Range kVowels[] = {{0x1160, 0x11A7}, {0xD7B0, 0xD7C6}};
constexpr Range kFinals[] = {{0x11A8, 0x11FF}, {0xD7CB, 0xD7FB}};

bool IsLetter(utf8proc_int32_t character) {
    const utf8proc_category_t category = utf8proc_category(character);
    return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_LO;
}

bool IsMark(utf8proc_int32_t character) {
    const utf8proc_category_t category = utf8proc_category(character);
    return category >= UTF8PROC_CATEGORY_MN && category <= UTF8PROC_CATEGORY_ME;
}

bool IsDigit(utf8proc_int32_t character) {
    const utf8proc_category_t category = utf8proc_category(character);
    return category >= UTF8PROC_CATEGORY_ND && category <= UTF8PROC_CATEGORY_NO;
}

int CombiningClassOf(const Unit& unit) {
    return utf8proc_get_property(unit.character)->combining_class;
}

// Marks that may be exchanged without a difference are put in their one order (Unicode, D109).
void OrderMarks(std::vector<Unit>& units) {
    for (auto start = units.begin(); start != units.end();) {
        const auto isStarter = [](const Unit& unit) { return CombiningClassOf(unit) == 0; };
        start = std::find_if_not(start, units.end(), isStarter);
        const auto end = std::find_if(start, units.end(), isStarter);
        std::stable_sort(start, end,
                         [](const Unit& a, const Unit& b) { return CombiningClassOf(a) < CombiningClassOf(b); });
        start = end;
    }
}

std::vector<Unit> DecomposedText(std::string_view utf8) {
    std::vector<Unit> units;
    units.reserve(utf8.size());
    std::array<utf8proc_int32_t, 64> characters;  // the longest decomposition has 18
    for (std::size_t begin = 0; begin < utf8.size();) {
        utf8proc_int32_t character = 0;
        const utf8proc_ssize_t size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()) + begin,
                                                       static_cast<utf8proc_ssize_t>(utf8.size() - begin), &character);
        const std::size_t end = begin + static_cast<std::size_t>(std::max<utf8proc_ssize_t>(size, 1));
        int boundary = 0;
        const utf8proc_ssize_t count =
            utf8proc_decompose_char(size > 0 ? character : kNoCharacter, characters.data(),
                                    static_cast<utf8proc_ssize_t>(characters.size()), kFolding, &boundary);
        for (std::size_t i = 0; i < static_cast<std::size_t>(std::max<utf8proc_ssize_t>(count, 0)); ++i) {
            units.push_back({characters[i], begin, end});
        }
        begin = end;
    }
    OrderMarks(units);
    return units;
}

// Puts words together from characters that come one by one.
class WordMaker {
public:
    void Add(const Unit& unit) {
        const bool isMark = IsMark(unit.character);
        if (isMark && marksAreOptional_) {
            if (!word_.empty()) end_ = unit.end;
            return;
        }
        const bool isLetter = IsLetter(unit.character);
        if (!isMark) marksAreOptional_ = isLetter && IsIn(kMarksAreOptional, unit.character);
        if (!isMark && !isLetter && !IsDigit(unit.character)) return Close();
        if (!isMark && !GoesOn(unit.character)) Close();
        if (word_.empty()) begin_ = unit.begin;
        end_ = unit.end;
        word_.push_back(unit.character);
    }

    std::vector<FoldedWord> Finish() {
        Close();
        return std::move(words_);
    }

private:
    // Whether a letter or digit belongs to the word in front of it.
    bool GoesOn(utf8proc_int32_t character) const {
        if (word_.empty()) return true;
        if (IsIn(kVowels, character)) return IsLeadingConsonant(word_.back());
        if (IsIn(kFinals, character)) return IsIn(kVowels, word_.back());
        return !IsIn(kStandAlone, character) && !IsIn(kStandAlone, word_.front());
    }

    static bool IsLeadingConsonant(utf8proc_int32_t character) {
        return (character >= 0x1100 && character <= 0x115F) || (character >= 0xA960 && character <= 0xA97C);
    }

    void Close() {
        if (word_.empty()) return;
        const utf8proc_ssize_t length =
            utf8proc_normalize_utf32(word_.data(), static_cast<utf8proc_ssize_t>(word_.size()), kComposing);
        std::string text;
        for (std::size_t i = 0; i < static_cast<std::size_t>(length); ++i) {
            std::array<utf8proc_uint8_t, 4> bytes;
            const utf8proc_ssize_t size = utf8proc_encode_char(word_[i], bytes.data());
            text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(size));
        }
        words_.push_back({std::move(text), begin_, end_});
        word_.clear();
    }

    std::vector<utf8proc_int32_t> word_;  // as far as it has come
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool marksAreOptional_ = false;  // behind the last letter
    std::vector<FoldedWord> words_;
};

}  // namespace

std::vector<FoldedWord> FoldedWords(std::string_view utf8) {
    WordMaker maker;
    for (const Unit& unit : DecomposedText(utf8)) maker.Add(unit);
    return maker.Finish();
}

std::string FoldedText(std::string_view utf8) {
    std::string text;
    for (const FoldedWord& word : FoldedWords(utf8)) text.append(text.empty() ? "" : " ").append(word.text);
    return text;
}

std::size_t ColumnsOf(std::string_view utf8) {
    std::size_t columns = 0;
    for (std::size_t position = 0; position < utf8.size();) {
        utf8proc_int32_t character = 0;
        const utf8proc_ssize_t size =
            utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()) + position,
                             static_cast<utf8proc_ssize_t>(utf8.size() - position), &character);
        columns += size > 0 ? static_cast<std::size_t>(utf8proc_charwidth(character)) : 1;
        position += static_cast<std::size_t>(std::max<utf8proc_ssize_t>(size, 1));
    }
    return columns;
}

}  // namespace ZEMA
