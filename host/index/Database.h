// The data base of the index: SQLite's C interface behind two small classes.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/search/QuerySql.h"
#include "host/system/Failure.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ZEMA {

// Bytes that are no text, such as a path: a BLOB.
struct Bytes {
    std::string_view bytes;
};

class Database;

// One statement, to be run as often as wanted.
//
// Ownership: does not outlive its data base.
// Errors:    kept by the data base; Step() is false after one, and columns are empty.
class Statement {
public:
    // Sets all places from the first one on, after what was left of the last run is let go.
    template <class... Values>
    Statement& Bind(const Values&... values) {
        Reset();
        (BindNext(values), ...);
        return *this;
    }

    // Sets the next place behind those that are set. Texts and bytes are copied.
    void BindNext(std::int64_t number);
    void BindNext(std::string_view text);
    void BindNext(Bytes bytes);
    void BindNext(std::nullptr_t);
    void BindNext(const SqlValue& value);

    // Goes to the next row; false behind the last one.
    bool Step();
    // Goes through all rows.
    void Run() {
        while (Step()) {
        }
    }
    // Lets go of what was read, so that the next step is the first again.
    void Rewind();
    // And of what was set.
    void Reset();

    // Of the row; the first column is 0. A view lives until the next step.
    std::int64_t Number(int column) const;
    std::string_view Text(int column) const;  // a BLOB's bytes as well; empty for NULL
    bool IsNull(int column) const;

private:
    friend class Database;
    Statement(Database& database, sqlite3_stmt* statement) : database_(&database), statement_(statement) {}

    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    Database* database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    int bound_ = 0;
};

// One connection to a data base.
//
// Errors: the first failure of any statement is kept, and no statement does anything after it. So whoever runs several
//         asks once, behind the last one. A damaged file is FailureKind::Damaged, everything else FailureKind::System.
//         A transaction that was under way is undone, at the latest when the data base goes.
class Database {
public:
    enum class Mode { Read, Write };

    // Opens a file that is there. What other connections have locked is waited for, up to `patience`.
    static Result<std::unique_ptr<Database>> Open(const std::string& path, Mode mode,
                                                  std::chrono::milliseconds patience = std::chrono::minutes(5));
    // An empty one that goes with the object.
    static std::unique_ptr<Database> InMemory();

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    // Runs statements that take no values and whose rows do not matter.
    void Run(const char* sql);
    Statement Prepare(const std::string& sql);
    // The first column of the first row.
    std::int64_t NumberOf(const char* sql);
    // The bytes of a file that would hold it.
    std::string Image();

    bool Failed() const { return static_cast<bool>(failure_); }
    const Failure& Why() const { return failure_; }

private:
    friend class Statement;
    Database() = default;
    static std::unique_ptr<Database> OpenWith(const std::string& path, int flags, std::chrono::milliseconds patience);
    void Note(int code);

    sqlite3* database_ = nullptr;
    Failure failure_;
};

}  // namespace ZEMA
