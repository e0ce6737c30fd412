// What a user searches for: the query language, from text to tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ZEMA {

// Where a word is looked for.
enum class TextField { Anywhere, Authors, Creator, Keywords, Descriptions, Designs };

// Words that follow each other in one text. They are folded (FoldedWords), one at least; of a prefix only the beginning
// of the last one is known.
struct WordsCondition {
    TextField field = TextField::Anywhere;
    std::vector<std::string> words;
    bool isPrefix = false;
};

// A number of bricks within bounds that count themselves.
struct BricksCondition {
    std::optional<std::int64_t> least;
    std::optional<std::int64_t> most;
};

// A description in this language; case does not count.
struct LanguageCondition {
    std::string language;
};

// The version of the markup.
struct VersionCondition {
    std::string version;
};

// A piece of the path, in which '*' stands for any characters; the case of ASCII letters does not count.
struct PathCondition {
    std::string piece;
};

enum class DocumentState { Failed, Away, Repaired };

struct Query;

// All of them hold, any of them does, or the one does not.
struct AllOf {
    std::vector<Query> parts;
};
struct AnyOf {
    std::vector<Query> parts;
};
struct NoneOf {
    std::vector<Query> parts;  // one
};

// A condition that a document meets or does not meet. An AllOf in an AllOf is joined with it, and so is an AnyOf in an
// AnyOf; each has two parts at least.
struct Query {
    std::variant<WordsCondition, BricksCondition, LanguageCondition, VersionCondition, PathCondition, DocumentState,
                 AllOf, AnyOf, NoneOf>
        content;
};

// What came of reading a query.
struct ParsedQuery {
    std::optional<Query> query;
    std::string expected;            // without a query: what should stand at the place, as a sentence
    std::size_t place = 0;           // in bytes
    std::vector<std::string> hints;  // what the user may have meant otherwise, as sentences
};

// Reads a query in UTF-8. The language, with every form and what it means, is docs/query-language.md.
//
// A query nests 100 deep and has 500 conditions at most; so nothing that works on its tree runs out of stack, and none
// comes near what the data base takes.
ParsedQuery ParseQuery(std::string_view text);

}  // namespace ZEMA
