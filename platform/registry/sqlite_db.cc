#include "sqlite_db.h"

#include <cerrno>
#include <new>

#include "failure.h"

namespace zxreg {
namespace {

// How long reading waits while another process recovers or closes the database.
constexpr int readingPatience = 5000;

// The code for SQLite's result; `systemError` is the errno behind it. Whatever SQLite finds wrong with the SQL itself
// means that the tables are not what they were made as.
int codeOf(int result, int systemError) {
    switch (result & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return ZXREG_E_BUSY;
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_READONLY:
            return ZXREG_E_PERMISSION;
        case SQLITE_CANTOPEN:
            return systemError == EACCES || systemError == EPERM || systemError == EROFS || systemError == EISDIR
                       ? ZXREG_E_PERMISSION
                       : ZXREG_E_IO;
        case SQLITE_NOTADB:
            return ZXREG_E_FOREIGN;
        case SQLITE_CORRUPT:
        case SQLITE_ERROR:
        case SQLITE_SCHEMA:
        case SQLITE_CONSTRAINT:
        case SQLITE_MISMATCH:
        case SQLITE_RANGE:
            return ZXREG_E_CORRUPT;
        default:
            return ZXREG_E_IO;
    }
}

}  // namespace

Statement::Statement(Database& database, const char* sql) : _database(database) {
    database.check(sqlite3_prepare_v3(database.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &_statement, nullptr));
}

Query::~Query() {
    sqlite3_reset(_statement);
    sqlite3_clear_bindings(_statement);
}

Query& Query::number(uint64_t number) {
    _database.check(sqlite3_bind_int64(_statement, ++_parameter, static_cast<sqlite3_int64>(number)));
    return *this;
}

Query& Query::bytes(std::string_view bytes) {
    const char* data = bytes.data() != nullptr ? bytes.data() : "";
    _database.check(sqlite3_bind_blob64(_statement, ++_parameter, data, bytes.size(), SQLITE_STATIC));
    return *this;
}

bool Query::step() {
    const int result = sqlite3_step(_statement);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) _database.fail(result);
    return false;
}

std::string_view Query::bytesAt(int column) {
    const void* data = sqlite3_column_blob(_statement, column);
    const int size = sqlite3_column_bytes(_statement, column);
    if (data == nullptr && sqlite3_errcode(_database.get()) == SQLITE_NOMEM) throw std::bad_alloc();
    return data != nullptr ? std::string_view(static_cast<const char*>(data), static_cast<size_t>(size))
                           : std::string_view();
}

Database::Database(const std::string& path) : _path(path) {
    sqlite3* database = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int result = sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    _database.reset(database);
    if (database == nullptr) throw std::bad_alloc();
    check(result);
    check(sqlite3_busy_timeout(database, readingPatience));
    check(sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr));
    check(sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr));
}

void Database::execute(const char* sql) {
    check(sqlite3_exec(get(), sql, nullptr, nullptr, nullptr));
}

void Database::checkPlace() {
    int hasMoved = 0;
    check(sqlite3_file_control(get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved));
    if (hasMoved != 0)
        throw Failure(ZXREG_E_IO, _path + ": the file has been moved or replaced; open the store again.");
}

uint64_t Database::pragma(const char* sql) {
    Statement statement(*this, sql);
    Query query(statement);
    return query.step() ? query.numberAt(0) : 0;
}

bool Database::tryBeginImmediate() {
    sqlite3_busy_timeout(get(), 0);
    const int result = sqlite3_exec(get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    sqlite3_busy_timeout(get(), readingPatience);
    if ((result & 0xff) == SQLITE_BUSY) return false;
    check(result);
    return true;
}

void Database::prepareRollback() {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v3(get(), "ROLLBACK", -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    _rollback.reset(statement);
}

void Database::rollback() noexcept {
    if (sqlite3_get_autocommit(get()) != 0) return;
    sqlite3_step(_rollback.get());
    sqlite3_reset(_rollback.get());
}

void Database::fail(int result) const {
    if ((result & 0xff) == SQLITE_NOMEM || result == SQLITE_IOERR_NOMEM) throw std::bad_alloc();
    const int code = codeOf(result, sqlite3_system_errno(get()));
    throw Failure(code, _path + ": " + sqlite3_errmsg(get()) + ".");
}

ReadTransaction::ReadTransaction(Database& database) : _database(database) {
    database.execute("BEGIN");
}

}  // namespace zxreg
