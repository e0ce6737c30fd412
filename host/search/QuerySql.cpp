#include "host/search/QuerySql.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace ZEMA {

namespace {

// How far conditions nest in one expression of SQL, and of the full-text table. Both parsers have a small stack, of 100
// entries of which a level takes about three.
constexpr std::size_t kDeepestExpression = 20;
constexpr std::size_t kDeepestMatch = 6;

const char* ColumnOf(TextField field) {
    switch (field) {
        case TextField::Authors:
            return "authors";
        case TextField::Creator:
            return "creator";
        case TextField::Keywords:
            return "keywords";
        case TextField::Descriptions:
            return "descriptions";
        case TextField::Designs:
            return "designs";
        case TextField::Anywhere:
            break;
    }
    return nullptr;
}

// A phrase of FTS5. Folded words are letters, digits and marks, and so end no quotation.
std::string MatchOf(const WordsCondition& condition) {
    std::string match;
    if (const char* const column = ColumnOf(condition.field)) match.append(column).append(" : ");
    match += '"';
    for (const std::string& word : condition.words) match.append(&word == &condition.words.front() ? "" : " ") += word;
    return match + (condition.isPrefix ? "\" *" : "\"");
}

// A query for the full-text table, which can say all that has words and operators but no lone NOT; nothing otherwise.
std::optional<std::string> MatchOf(const Query& query, std::size_t depth) {
    if (const auto* const words = std::get_if<WordsCondition>(&query.content)) return MatchOf(*words);
    const auto* const all = std::get_if<AllOf>(&query.content);
    const auto* const any = std::get_if<AnyOf>(&query.content);
    if ((all == nullptr && any == nullptr) || depth == kDeepestMatch) return std::nullopt;
    std::string match;
    for (const Query& part : all != nullptr ? all->parts : any->parts) {
        const std::optional<std::string> own = MatchOf(part, depth + 1);
        if (!own) return std::nullopt;
        match.append(match.empty() ? "(" : all != nullptr ? " AND " : " OR ").append(*own);
    }
    return match + ")";
}

// In LIKE, '%' stands for any characters and '_' for one.
std::string LikePattern(const std::string& piece) {
    std::string pattern = "%";
    for (const char unit : piece) {
        if (unit == '%' || unit == '_' || unit == '\\') pattern += '\\';
        pattern += unit == '*' ? '%' : unit;
    }
    return pattern + "%";
}

void Append(std::vector<SqlValue> from, std::vector<SqlValue>& values) {
    std::move(from.begin(), from.end(), std::back_inserter(values));
}

// Makes conditions of which none is NULL, so that NOT turns each into its opposite.
class ConditionMaker {
public:
    SqlPiece Make(const Query& query, std::size_t depth = 0) {
        if (const std::optional<std::string> match = MatchOf(query, 0))
            return {"documents.id IN (SELECT rowid FROM words WHERE words MATCH ?)", {*match}};
        if (depth == kDeepestExpression) return Named(Make(query));
        return std::visit([&](const auto& content) { return this->Of(content, depth); }, query.content);
    }

    SqlPiece TakeSets() { return std::move(sets_); }

private:
    SqlPiece Of(const WordsCondition&, std::size_t) { return {}; }  // always a match

    SqlPiece Of(const BricksCondition& condition, std::size_t) {
        SqlPiece piece{"(documents.bricks IS NOT NULL", {}};
        if (condition.least) {
            piece.sql += " AND documents.bricks >= ?";
            piece.values.emplace_back(*condition.least);
        }
        if (condition.most) {
            piece.sql += " AND documents.bricks <= ?";
            piece.values.emplace_back(*condition.most);
        }
        piece.sql += ")";
        return piece;
    }

    SqlPiece Of(const LanguageCondition& condition, std::size_t) {
        return {"documents.id IN (SELECT document FROM languages WHERE language = ?)", {condition.language}};
    }

    SqlPiece Of(const VersionCondition& condition, std::size_t) {
        return {"documents.version IS ?", {condition.version}};
    }

    SqlPiece Of(const PathCondition& condition, std::size_t) {
        return {"CAST(documents.path AS TEXT) LIKE ? ESCAPE '\\'", {LikePattern(condition.piece)}};
    }

    SqlPiece Of(DocumentState state, std::size_t) {
        if (state == DocumentState::Failed) return {"documents.error IS NOT NULL", {}};
        return {state == DocumentState::Away ? "documents.away" : "documents.repaired", {}};
    }

    SqlPiece Of(const AllOf& all, std::size_t depth) { return Joined(all.parts, " AND ", depth); }
    SqlPiece Of(const AnyOf& any, std::size_t depth) { return Joined(any.parts, " OR ", depth); }

    SqlPiece Of(const NoneOf& none, std::size_t depth) {
        SqlPiece piece = Make(none.parts.front(), depth + 1);
        piece.sql = "NOT " + piece.sql;
        return piece;
    }

    // Those parts that the full-text table can join are joined there.
    SqlPiece Joined(const std::vector<Query>& parts, const char* joint, std::size_t depth) {
        std::string match;
        SqlPiece joined;
        for (const Query& part : parts) {
            if (const std::optional<std::string> own = MatchOf(part, 1)) {
                match.append(match.empty() ? "" : joint).append(*own);
                continue;
            }
            SqlPiece piece = Make(part, depth + 1);
            joined.sql.append(joined.sql.empty() ? "" : joint).append(piece.sql);
            Append(std::move(piece.values), joined.values);
        }
        if (!match.empty()) {
            joined.sql += std::string(joint) + "documents.id IN (SELECT rowid FROM words WHERE words MATCH ?)";
            joined.values.emplace_back(match);
        }
        joined.sql = "(" + joined.sql + ")";
        return joined;
    }

    SqlPiece Named(SqlPiece piece) {
        const std::string name = "set" + std::to_string(++setCount_);
        sets_.sql.append(sets_.sql.empty() ? "" : ", ").append(name);
        sets_.sql.append("(id) AS (SELECT id FROM documents WHERE ").append(piece.sql).append(")");
        Append(std::move(piece.values), sets_.values);
        return {"documents.id IN " + name, {}};
    }

    SqlPiece sets_;
    std::size_t setCount_ = 0;
};

// Parts for the full-text table, and the rest.
struct Split {
    std::string match;
    AllOf rest;
};

Split SplitOf(const Query& query) {
    Split split;
    if (const std::optional<std::string> match = MatchOf(query, 0)) {
        split.match = *match;
    } else if (const auto* const all = std::get_if<AllOf>(&query.content)) {
        for (const Query& part : all->parts) {
            if (const std::optional<std::string> own = MatchOf(part, 1)) {
                split.match.append(split.match.empty() ? "" : " AND ").append(*own);
            } else {
                split.rest.parts.push_back(part);
            }
        }
    } else {
        split.rest.parts.push_back(query);
    }
    return split;
}

}  // namespace

QuerySql SqlOf(const Query& query) {
    Split split = SplitOf(query);
    ConditionMaker maker;
    SqlPiece condition;
    for (const Query& part : split.rest.parts) {
        SqlPiece piece = maker.Make(part);
        condition.sql.append(condition.sql.empty() ? "" : " AND ").append(piece.sql);
        Append(std::move(piece.values), condition.values);
    }
    if (condition.sql.empty()) condition.sql = "1";
    return {maker.TakeSets(), std::move(split.match), std::move(condition)};
}

}  // namespace ZEMA
