#include "host/search/Query.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

#include "host/search/Fold.h"

namespace ZEMA {

namespace {

constexpr std::size_t kDeepest = 100;
constexpr std::size_t kMostConditions = 500;
constexpr std::size_t kLongestPiece = 4096;  // of a path

// Besides those of ASCII, the blank of Japanese keyboards and the one that does not break a line.
constexpr std::array<std::string_view, 6> kBlanks = {" ", "\t", "\n", "\r", "\xE3\x80\x80", "\xC2\xA0"};

struct NamedField {
    std::string_view name;
    TextField field;
};

constexpr std::array<NamedField, 5> kTextFields = {{
    {"author", TextField::Authors},
    {"creator", TextField::Creator},
    {"keyword", TextField::Keywords},
    {"description", TextField::Descriptions},
    {"brick", TextField::Designs},
}};

struct NamedState {
    std::string_view name;
    DocumentState state;
};

constexpr std::array<NamedState, 3> kStates = {{
    {"failed", DocumentState::Failed},
    {"away", DocumentState::Away},
    {"repaired", DocumentState::Repaired},
}};

// Joins parts by one operator; one part alone stays as it is, and parts that are joined by the same operator are joined
// with the others.
template <class Operator>
Query Joined(std::vector<Query> parts) {
    if (parts.size() == 1) return std::move(parts.front());
    Operator all;
    for (Query& part : parts) {
        if (auto* const same = std::get_if<Operator>(&part.content)) {
            std::move(same->parts.begin(), same->parts.end(), std::back_inserter(all.parts));
        } else {
            all.parts.push_back(std::move(part));
        }
    }
    return {std::move(all)};
}

Query Inverted(Query query) {
    NoneOf none;
    none.parts.push_back(std::move(query));
    return {std::move(none)};
}

// One piece of a condition as it was typed: up to a blank, a parenthesis or a quotation mark, or what stands in those.
struct Piece {
    std::string_view text;
    std::size_t place;
    bool isQuoted;
    bool hasStar;  // behind it
};

// Reads a query from front to back, one function a rule. The first mistake is kept, and reading goes on at the end of
// the text, where every rule ends by itself.
//
//   any       = all { "OR" all }
//   all       = one { ["AND"] one }
//   one       = { "NOT" } ( "(" any ")" | condition )
//   condition = [ field ":" ] ( word | '"' ... '"' ) [ "*" ]
class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    ParsedQuery Read() {
        Query query = ReadAny();
        if (!AtEnd()) Fail(position_, "there is no '(' for this ')'");
        if (parsed_.expected.empty()) parsed_.query = std::move(query);
        return std::move(parsed_);
    }

private:
    Query Fail(std::size_t place, std::string expected) {
        if (parsed_.expected.empty()) {
            parsed_.expected = std::move(expected);
            parsed_.place = place;
        }
        position_ = text_.size();
        return {};
    }

    Query ReadAny() {
        std::vector<Query> parts;
        do {
            parts.push_back(ReadAll());
        } while (TakeOperator("OR"));
        return Joined<AnyOf>(std::move(parts));
    }

    Query ReadAll() {
        std::vector<Query> parts;
        do {
            parts.push_back(ReadOne());
        } while (TakeOperator("AND") || OneFollows());
        return Joined<AllOf>(std::move(parts));
    }

    Query ReadOne() {
        bool inverted = false;
        while (TakeOperator("NOT")) inverted = !inverted;
        SkipBlanks();
        Query query = NextIs('(') ? ReadParentheses() : ReadCondition();
        return inverted ? Inverted(std::move(query)) : std::move(query);
    }

    Query ReadParentheses() {
        const std::size_t start = position_++;
        if (++depth_ > kDeepest) return Fail(start, "parentheses nest 100 deep at most");
        Query query = ReadAny();
        if (!NextIs(')')) return Fail(start, "there is no ')' for this '('");
        ++position_;
        --depth_;
        return query;
    }

    Query ReadCondition() {
        const std::size_t start = position_;
        if (++conditions_ > kMostConditions) return Fail(start, "a query has 500 conditions at most");
        if (AtEnd() || NextIs(')') || IsOperator(WordAt(start)))
            return Fail(start, "a word, a phrase in quotation marks or a field is expected here");
        const std::string_view field = TakeFieldName();
        if (field.empty()) {
            TellOfSmallOperators(start);
            return WordsIn(TextField::Anywhere, ReadPiece());
        }
        if (AtEnd() || NextIs(')') || NextIs('(') || NextIsBlank())
            return Fail(position_, "a value is expected right behind '" + std::string(field) + ":'");
        return ConditionOn(field, start, ReadPiece());
    }

    Query ConditionOn(std::string_view field, std::size_t start, Piece piece) {
        for (const NamedField& known : kTextFields) {
            if (known.name != field) continue;
            if (known.field == TextField::Designs && !IsNumber(piece.text))
                return Fail(piece.place, "the number of a brick design is expected here, as in brick:3062");
            return WordsIn(known.field, piece);
        }
        if (field == "path") return PathWith(piece);
        if (piece.hasStar) return Fail(piece.place + piece.text.size(), "'*' stands behind words and in paths only");
        if (field == "bricks") return BricksIn(piece);
        if (field == "lang") return {LanguageCondition{std::string(piece.text)}};
        if (field == "version") return {VersionCondition{std::string(piece.text)}};
        if (field == "is") return StateOf(piece);
        return Fail(start,
                    "there is no field '" + std::string(field) +
                        "', only author, creator, keyword, description, brick, bricks, lang, version, path and is; "
                        "words with a ':' are put in quotation marks");
    }

    Query WordsIn(TextField field, const Piece& piece) {
        if (const std::size_t star = piece.text.find('*'); star != std::string_view::npos && !piece.isQuoted)
            return Fail(piece.place + star, "'*' stands at the end of a word only");
        WordsCondition condition{field, {}, piece.hasStar};
        for (FoldedWord& word : FoldedWords(piece.text)) condition.words.push_back(std::move(word.text));
        if (condition.words.empty()) return Fail(piece.place, "a letter or a digit is expected here");
        return {std::move(condition)};
    }

    static bool IsNumber(std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    }

    Query PathWith(const Piece& piece) {
        if (piece.text.size() > kLongestPiece) return Fail(piece.place, "a piece of a path has 4096 bytes at most");
        return {PathCondition{std::string(piece.text) + (piece.hasStar ? "*" : "")}};
    }

    Query StateOf(const Piece& piece) {
        for (const NamedState& known : kStates) {
            if (known.name == piece.text) return {known.state};
        }
        return Fail(piece.place, "failed, away or repaired is expected here");
    }

    Query BricksIn(const Piece& piece) {
        const std::size_t dots = piece.text.find("..");
        const bool isRange = dots != std::string_view::npos;
        const std::string_view first = piece.text.substr(0, dots);
        const std::string_view last = isRange ? piece.text.substr(dots + 2) : first;
        const BricksCondition bricks{NumberIn(first), NumberIn(last)};
        const bool firstIsOpen = isRange && first.empty() && bricks.most;
        const bool lastIsOpen = isRange && last.empty() && bricks.least;
        if ((!bricks.least && !firstIsOpen) || (!bricks.most && !lastIsOpen))
            return Fail(piece.place,
                        "a number or a range is expected here, as in bricks:100, bricks:100.., bricks:..50");
        return {bricks};
    }

    static std::optional<std::int64_t> NumberIn(std::string_view text) {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number < 0) return std::nullopt;
        return number;
    }

    Piece ReadPiece() {
        Piece piece = NextIs('"') ? ReadQuoted() : ReadBare();
        if (NextIs('*')) {
            piece.hasStar = true;
            ++position_;
        }
        return piece;
    }

    Piece ReadQuoted() {
        const std::size_t start = position_++;
        const std::size_t end = text_.find('"', position_);
        if (end == std::string_view::npos) {
            Fail(start, "there is no second '\"' for this one");
            return {{}, start, true, false};
        }
        const Piece piece{text_.substr(position_, end - position_), position_, true, false};
        position_ = end + 1;
        return piece;
    }

    Piece ReadBare() {
        const std::size_t start = position_;
        std::string_view word = WordAt(start);
        if (word.size() > 1 && word.ends_with('*')) word.remove_suffix(1);
        position_ += word.size();
        return {word, start, false, false};
    }

    // A name and its colon, or nothing.
    std::string_view TakeFieldName() {
        const std::string_view word = WordAt(position_);
        const std::size_t colon = word.find(':');
        if (colon == std::string_view::npos || colon == 0) return {};
        position_ += colon + 1;
        return word.substr(0, colon);
    }

    bool TakeOperator(std::string_view name) {
        SkipBlanks();
        if (WordAt(position_) != name) return false;
        position_ += name.size();
        return true;
    }

    bool OneFollows() {
        SkipBlanks();
        return !AtEnd() && !NextIs(')') && WordAt(position_) != "OR";
    }

    static bool IsOperator(std::string_view word) { return word == "OR" || word == "AND" || word == "NOT"; }

    void TellOfSmallOperators(std::size_t place) {
        for (const auto& [word, capitals] : {std::pair("or", "OR"), std::pair("not", "NOT")}) {
            if (WordAt(place) == word)
                parsed_.hints.push_back(std::string("'") + word + "' is looked for as a word; the operator is " +
                                        capitals);
        }
    }

    // From there to the next blank, parenthesis or quotation mark; it may be empty.
    std::string_view WordAt(std::size_t place) const {
        std::size_t end = place;
        while (end < text_.size() && text_[end] != '(' && text_[end] != ')' && text_[end] != '"' &&
               BlankSizeAt(end) == 0) {
            ++end;
        }
        return text_.substr(place, end - place);
    }

    std::size_t BlankSizeAt(std::size_t place) const {
        for (const std::string_view blank : kBlanks) {
            if (text_.substr(place).starts_with(blank)) return blank.size();
        }
        return 0;
    }

    void SkipBlanks() {
        while (const std::size_t size = BlankSizeAt(position_)) position_ += size;
    }

    bool AtEnd() const { return position_ == text_.size(); }
    bool NextIs(char unit) const { return !AtEnd() && text_[position_] == unit; }
    bool NextIsBlank() const { return BlankSizeAt(position_) != 0; }

    const std::string_view text_;
    std::size_t position_ = 0;
    std::size_t depth_ = 0;       // of the parentheses around it
    std::size_t conditions_ = 0;  // so far
    ParsedQuery parsed_;
};

}  // namespace

ParsedQuery ParseQuery(std::string_view text) {
    return Parser(text).Read();
}

}  // namespace ZEMA
