// What the index answers to a query.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "host/index/Database.h"
#include "host/search/Query.h"

namespace ZEMA {

// The order of hits; those that are alike in it follow their paths.
enum class HitOrder {
    // How often the words occur, and how rare they are. Without words that all hits hold, by paths; and as they come
    // for
    // so many hits that nobody looks at the first ones alone.
    Relevance,
    Path,    // in bytes
    Bricks,  // the largest first
    Name,    // of the file
    Time,    // of the last modification, the newest first
    Any,     // as they come, which costs nothing
};

// The documents that a query finds, as they are while this is there, whatever a run changes meanwhile.
//
// Errors: kept by the data base, which must outlive this.
class Hits {
public:
    Hits(Database& database, const Query& query, HitOrder order);
    Hits(const Hits&) = delete;
    Hits& operator=(const Hits&) = delete;
    ~Hits();

    std::size_t Count() const { return documents_.size(); }

    std::string Path(std::size_t index);
    DocumentRecord Record(std::size_t index);

private:
    bool Find(std::size_t index, Statement& statement);

    Database& database_;
    std::vector<std::int64_t> documents_;
    Statement path_;
    Statement record_;
};

// Tells which records a query finds, by tables of the same kind that hold one record at a time.
class RecordFilter {
public:
    explicit RecordFilter(const Query& query);
    RecordFilter(RecordFilter&&) noexcept;
    ~RecordFilter();

    bool Finds(const DocumentRecord& record);

    // After a failure nothing is found.
    const Failure& Why() const;

private:
    struct Tables;
    std::unique_ptr<Tables> tables_;
};

}  // namespace ZEMA
