#include "host/index/IndexSearch.h"

#include <utility>

#include "host/index/IndexTables.h"
#include "host/search/QuerySql.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

// Ranking this many hits takes 30 ms.
constexpr std::int64_t kMostRanked = 20'000;

// The name of a file is what follows the last slash; there is no function for that, but one that takes characters away
// at the end of a text: here all but slashes.
//
// With its sign the path is no column of an index: else the index on paths would be gone through from one end to the
// other, only to save sorting the hits.
const char* OrderBy(HitOrder order) {
    switch (order) {
        case HitOrder::Relevance:
            return " ORDER BY words.rank, documents.path";
        case HitOrder::Any:
            return "";
        case HitOrder::Bricks:
            return " ORDER BY documents.bricks DESC, documents.path";
        case HitOrder::Name:
            return " ORDER BY substr(CAST(documents.path AS TEXT), length(rtrim(CAST(documents.path AS TEXT), "
                   "replace(CAST(documents.path AS TEXT), '/', ''))) + 1), documents.path";
        case HitOrder::Time:
            return " ORDER BY documents.modified DESC, documents.path";
        case HitOrder::Path:
            break;
    }
    return " ORDER BY +documents.path";
}

// The order that is meant, and worth it.
HitOrder Effective(Database& database, HitOrder order, const std::string& match) {
    if (order != HitOrder::Relevance) return order;
    if (match.empty()) return HitOrder::Path;
    Statement count = database.Prepare("SELECT count(*) FROM words WHERE words MATCH ?");
    count.BindNext(std::string_view(match));
    return count.Step() && count.Number(0) <= kMostRanked ? order : HitOrder::Any;
}

// The statement that finds the documents of a query, with its values.
Statement PrepareQuery(Database& database, const Query& query, const std::string& more) {
    const QuerySql sql = SqlOf(query);
    std::string text = sql.sets.sql.empty() ? "" : "WITH " + sql.sets.sql + " ";
    text += "SELECT documents.id FROM ";
    text += sql.match.empty() ? "documents WHERE "
                              : "words CROSS JOIN documents ON documents.id = words.rowid "
                                "WHERE words MATCH ? AND ";
    Statement statement = database.Prepare(text + sql.condition.sql + more);
    for (const SqlValue& value : sql.sets.values) statement.BindNext(value);
    if (!sql.match.empty()) statement.BindNext(std::string_view(sql.match));
    for (const SqlValue& value : sql.condition.values) statement.BindNext(value);
    return statement;
}

}  // namespace

Hits::Hits(Database& database, const Query& query, HitOrder order)
    : database_(database),
      path_(database.Prepare("SELECT path FROM documents WHERE id = ?")),
      record_(database.Prepare(std::string("SELECT ") + kRecordColumns + " FROM documents WHERE id = ?")) {
    database_.Run("BEGIN");
    Statement statement = PrepareQuery(database, query, OrderBy(Effective(database, order, SqlOf(query).match)));
    while (statement.Step()) documents_.push_back(statement.Number(0));
}

Hits::~Hits() {
    path_.Reset();
    record_.Reset();
    database_.Run("COMMIT");
}

bool Hits::Find(std::size_t index, Statement& statement) {
    return statement.Bind(documents_[index]).Step();
}

std::string Hits::Path(std::size_t index) {
    return Find(index, path_) ? std::string(path_.Text(0)) : std::string();
}

DocumentRecord Hits::Record(std::size_t index) {
    return Find(index, record_) ? RecordOf(record_) : DocumentRecord();
}

struct RecordFilter::Tables {
    explicit Tables(const Query& query)
        : database(Created()), tables(*database, ""), statement(PrepareQuery(*database, query, "")) {}

    static std::unique_ptr<Database> Created() {
        std::unique_ptr<Database> database = Database::InMemory();
        CreateTables(*database, 0);
        return database;
    }

    std::unique_ptr<Database> database;
    DocumentTables tables;
    Statement statement;  // with its values
};

RecordFilter::RecordFilter(const Query& query) : tables_(std::make_unique<Tables>(query)) {}
RecordFilter::RecordFilter(RecordFilter&&) noexcept = default;
RecordFilter::~RecordFilter() = default;

bool RecordFilter::Finds(const DocumentRecord& record) {
    DocumentRecord whole = record;
    const Result<std::string> absolute = AbsolutePath(record.path);
    if (absolute) whole.path = *absolute;
    tables_->database->Run("BEGIN");
    tables_->tables.Put(whole, {}, true, 0);
    const bool isFound = tables_->statement.Step();
    tables_->statement.Rewind();
    tables_->database->Run("ROLLBACK");
    return isFound;
}

const Failure& RecordFilter::Why() const {
    return tables_->database->Why();
}

}  // namespace ZEMA
