// A SQLite connection and its statements, with failures thrown by name.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zxreg {

class Database;

// A prepared statement, kept for the life of its connection and run through a Query.
class Statement {
public:
    Statement(Database& database, const char* sql);
    ~Statement() { sqlite3_finalize(_statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

private:
    friend class Query;
    Database& _database;
    sqlite3_stmt* _statement = nullptr;
};

// One run of a statement. Numbers are unsigned 64-bit, kept by SQLite in their signed form.
class Query {
public:
    explicit Query(Statement& statement) : _statement(statement._statement), _database(statement._database) {}
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    // Binds the next parameter. Bytes must outlive the query.
    Query& number(uint64_t number);
    Query& bytes(std::string_view bytes);

    // True when there is a row to look at.
    bool step();
    // For statements that give no rows.
    void run() { step(); }

    uint64_t numberAt(int column) { return static_cast<uint64_t>(sqlite3_column_int64(_statement, column)); }
    // Valid until the next step.
    std::string_view bytesAt(int column);

private:
    sqlite3_stmt* _statement;
    Database& _database;
    int _parameter = 0;
};

class Database {
public:
    // Opens an existing file for reading and, where that is allowed, for writing.
    explicit Database(const std::string& path);

    const std::string& path() const noexcept { return _path; }
    sqlite3* get() const noexcept { return _database.get(); }
    void execute(const char* sql);

    // Throws when the path leads to another file by now: what is written here would be lost to everybody else.
    void checkPlace();
    uint64_t pragma(const char* sql);
    // Opens a transaction for writing; false, at once, while another process has one.
    bool tryBeginImmediate();
    // To be called when all settings are made, as a later one would have to be followed by preparing again.
    void prepareRollback();
    // Ends any transaction that is still open. Takes no memory: it is called when there is none.
    void rollback() noexcept;

    // Throws the Failure that the result stands for.
    [[noreturn]] void fail(int result) const;
    void check(int result) const {
        if (result != SQLITE_OK) fail(result);
    }

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    std::string _path;
    std::unique_ptr<sqlite3, Closer> _database;
    std::unique_ptr<sqlite3_stmt, Finalizer> _rollback;
};

// A transaction that sees one state of the database and is rolled back when left.
class ReadTransaction {
public:
    explicit ReadTransaction(Database& database);
    ~ReadTransaction() { _database.rollback(); }
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

private:
    Database& _database;
};

}  // namespace zxreg
