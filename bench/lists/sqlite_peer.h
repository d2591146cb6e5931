// A SQLite table of addresses, as a program would keep one that uses SQLite and nothing else.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <string>

namespace bench {

// One table of one column, WITHOUT ROWID, and its prepared statements. A file is kept as safe as our store keeps its
// own: write-ahead log, synchronous=FULL. Addresses are given lower-cased.
class SqliteTable {
public:
    // `path` may be ":memory:". A table that is there already is used.
    explicit SqliteTable(const std::string& path);
    ~SqliteTable();
    SqliteTable(const SqliteTable&) = delete;
    SqliteTable& operator=(const SqliteTable&) = delete;

    bool has(const char* address, size_t length);
    void insert(const std::string& address);
    void remove(const std::string& address);
    void begin() { _run("BEGIN IMMEDIATE"); }
    void commit() { _run("COMMIT"); }
    size_t count();

private:
    void _run(const char* statement);
    sqlite3_stmt* _prepare(const char* statement);

    // Binds the address, makes one step, and says whether there was a row.
    bool _step(sqlite3_stmt* statement, const char* address, size_t length);

    sqlite3* _database = nullptr;
    sqlite3_stmt* _has = nullptr;
    sqlite3_stmt* _insert = nullptr;
    sqlite3_stmt* _remove = nullptr;
};

}  // namespace bench
