// A query as a condition on the tables of the index.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "host/search/Query.h"

namespace ZEMA {

// A value that is bound to a '?' in a statement.
using SqlValue = std::variant<std::int64_t, std::string>;

// A piece of a statement, and the values for the '?' in it, in order.
struct SqlPiece {
    std::string sql;
    std::vector<SqlValue> values;
};

// A query as SQL over the tables of docs/index-tables.md, of which nothing that a user typed is a part. A statement
// joins it so:
//
//   [WITH sets] SELECT ... FROM [words CROSS JOIN] documents ... WHERE [words MATCH match AND] condition
struct QuerySql {
    SqlPiece sets;       // named parts of very deep queries; mostly empty
    std::string match;   // a value for the full-text table; empty unless every hit must hold words
    SqlPiece condition;  // on a row of `documents`; "1" where `match` says it all
};

QuerySql SqlOf(const Query& query);

}  // namespace ZEMA
