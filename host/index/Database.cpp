#include "host/index/Database.h"

#include <sqlite3.h>

#include <cassert>

namespace ZEMA {

namespace {

Failure FailureOf(sqlite3* database, int code) {
    switch (code & 0xFF) {
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return {FailureKind::Damaged, "it is damaged"};
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return {FailureKind::System, "another program has locked it for too long"};
        case SQLITE_FULL:
            return {FailureKind::System, "the disk is full"};
        case SQLITE_NOMEM:
            return {FailureKind::Limit, "out of memory"};
        case SQLITE_IOERR:
        case SQLITE_CANTOPEN:
            if (const int error = sqlite3_system_errno(database); error != 0) return SystemFailure(error);
            break;
        default:
            break;
    }
    return {FailureKind::System, sqlite3_errmsg(database)};
}

}  // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

void Statement::BindNext(std::int64_t number) {
    if (statement_) sqlite3_bind_int64(statement_.get(), ++bound_, number);
}

// A null pointer would be NULL, which no text is.
void Statement::BindNext(std::string_view text) {
    if (!statement_) return;
    database_->Note(sqlite3_bind_text64(statement_.get(), ++bound_, text.data() == nullptr ? "" : text.data(),
                                        text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::BindNext(Bytes bytes) {
    if (!statement_) return;
    database_->Note(sqlite3_bind_blob64(statement_.get(), ++bound_,
                                        bytes.bytes.data() == nullptr ? "" : bytes.bytes.data(), bytes.bytes.size(),
                                        SQLITE_TRANSIENT));
}

void Statement::BindNext(std::nullptr_t) {
    if (statement_) sqlite3_bind_null(statement_.get(), ++bound_);
}

void Statement::BindNext(const SqlValue& value) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) return BindNext(*number);
    BindNext(std::string_view(std::get<std::string>(value)));
}

bool Statement::Step() {
    if (!statement_ || database_->Failed()) return false;
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    database_->Note(code);
    sqlite3_reset(statement_.get());
    return false;
}

void Statement::Rewind() {
    if (statement_) sqlite3_reset(statement_.get());
}

void Statement::Reset() {
    Rewind();
    bound_ = 0;
    if (statement_) sqlite3_clear_bindings(statement_.get());
}

std::int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

std::string_view Statement::Text(int column) const {
    const void* const bytes = sqlite3_column_blob(statement_.get(), column);
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

Result<std::unique_ptr<Database>> Database::Open(const std::string& path, Mode mode,
                                                 std::chrono::milliseconds patience) {
    std::unique_ptr<Database> database =
        OpenWith(path, mode == Mode::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE, patience);
    if (database->Failed()) return database->Why();
    return database;
}

std::unique_ptr<Database> Database::InMemory() {
    return OpenWith(":memory:", SQLITE_OPEN_READWRITE, {});
}

std::unique_ptr<Database> Database::OpenWith(const std::string& path, int flags, std::chrono::milliseconds patience) {
    std::unique_ptr<Database> database(new Database());
    database->Note(sqlite3_open_v2(path.c_str(), &database->database_, flags | SQLITE_OPEN_NOMUTEX, nullptr));
    if (database->Failed()) return database;
    sqlite3_busy_timeout(database->database_, static_cast<int>(patience.count()));
    // Somebody else may have written the file: what its schema says is not believed.
    sqlite3_db_config(database->database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database->database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return database;
}

Database::~Database() {
    const int code = sqlite3_close(database_);
    assert(code == SQLITE_OK);  // else a statement is still there
    static_cast<void>(code);
}

void Database::Run(const char* sql) {
    if (!Failed()) Note(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr));
}

Statement Database::Prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (!Failed()) {
        Note(sqlite3_prepare_v3(database_, sql.c_str(), static_cast<int>(sql.size()) + 1, SQLITE_PREPARE_PERSISTENT,
                                &statement, nullptr));
    }
    return {*this, statement};
}

std::int64_t Database::NumberOf(const char* sql) {
    Statement statement = Prepare(sql);
    return statement.Step() ? statement.Number(0) : 0;
}

std::string Database::Image() {
    sqlite3_int64 size = 0;
    unsigned char* const bytes = sqlite3_serialize(database_, "main", &size, 0);
    if (bytes == nullptr) Note(SQLITE_NOMEM);
    std::string image(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(bytes == nullptr ? 0 : size));
    sqlite3_free(bytes);
    return image;
}

void Database::Note(int code) {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE || Failed()) return;
    failure_ = FailureOf(database_, code);
}

}  // namespace ZEMA
