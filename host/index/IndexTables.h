// The tables of the index, and what a document becomes in them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/documents/DocumentRecord.h"
#include "host/index/Database.h"

namespace ZEMA {

// Raised by one with every change of the tables, for which CreateTables then has a step. docs/index-tables.md
// describes the newest.
inline constexpr std::int64_t kSchemaVersion = 1;

// Brings the tables from a version to the newest, in the caller's transaction; from 0 it makes them.
void CreateTables(Database& database, std::int64_t version);

// What the file system says of a document. Times are nanoseconds since 1970.
struct FileStamp {
    std::int64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    std::int64_t number = 0;  // of the file

    bool operator==(const FileStamp&) const = default;
};

// The columns of `documents` that RecordOf takes a record from.
inline constexpr const char* kRecordColumns =
    "path, imported, error, passing, repaired, away, version, creator, descriptions, authors, keywords, bricks, "
    "designs, others";
DocumentRecord RecordOf(const Statement& row);

// Writes documents into the tables. The caller has a transaction.
class DocumentTables {
public:
    // `program` is the version of the program that reads the documents.
    DocumentTables(Database& database, std::string program);

    // Enters a record, or puts it in the place of the one with the same path. A failure that passes leaves what is
    // known of the document as it was and is only noted. `isSettled` is false for a stamp that does not tell whether
    // the file was changed again.
    void Put(const DocumentRecord& record, const FileStamp& stamp, bool isSettled, std::int64_t folder);

    void Remove(std::int64_t document);

private:
    void PutWords(std::int64_t document, const DocumentRecord& record);

    std::string program_;
    Statement find_;
    Statement insert_;
    Statement update_;
    Statement noteFailure_;
    Statement removeWords_;
    Statement insertWords_;
    Statement removeLanguages_;
    Statement insertLanguage_;
    Statement removeDocument_;
};

}  // namespace ZEMA
