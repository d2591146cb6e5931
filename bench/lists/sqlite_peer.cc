#include "sqlite_peer.h"

#include "contestant.h"
#include "harness.h"

namespace bench {

namespace {

class DatabaseTable : public Contestant {
public:
    explicit DatabaseTable(const Entries& entries) : _table(":memory:") {
        _table.begin();
        for (const std::string& entry : entries)
            _table.insert(lowerCased(entry));
        _table.commit();
    }
    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i) {
            const Queries::Query& query = queries.all()[i];
            weights[i] = _table.has(query.lowered, query.length) ? weightOfAddress : 0;
        }
    }

private:
    SqliteTable _table;
};

}  // namespace

SqliteTable::SqliteTable(const std::string& path) {
    if (sqlite3_open(path.c_str(), &_database) != SQLITE_OK) fail(path);
    _run("PRAGMA journal_mode=WAL");
    _run("PRAGMA synchronous=FULL");
    _run("CREATE TABLE IF NOT EXISTS addresses (address TEXT PRIMARY KEY) WITHOUT ROWID");
    _has = _prepare("SELECT 1 FROM addresses WHERE address = ?1");
    _insert = _prepare("INSERT OR IGNORE INTO addresses VALUES (?1)");
    _remove = _prepare("DELETE FROM addresses WHERE address = ?1");
}

SqliteTable::~SqliteTable() {
    for (sqlite3_stmt* statement : {_has, _insert, _remove})
        sqlite3_finalize(statement);
    sqlite3_close(_database);
}

bool SqliteTable::has(const char* address, size_t length) {
    return _step(_has, address, length);
}

void SqliteTable::insert(const std::string& address) {
    _step(_insert, address.data(), address.size());
}

void SqliteTable::remove(const std::string& address) {
    _step(_remove, address.data(), address.size());
}

size_t SqliteTable::count() {
    sqlite3_stmt* const statement = _prepare("SELECT count(*) FROM addresses");
    sqlite3_step(statement);
    const auto rows = static_cast<size_t>(sqlite3_column_int64(statement, 0));
    sqlite3_finalize(statement);
    return rows;
}

void SqliteTable::_run(const char* statement) {
    if (sqlite3_exec(_database, statement, nullptr, nullptr, nullptr) != SQLITE_OK) fail(sqlite3_errmsg(_database));
}

sqlite3_stmt* SqliteTable::_prepare(const char* statement) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(_database, statement, -1, &prepared, nullptr) != SQLITE_OK) fail(sqlite3_errmsg(_database));
    return prepared;
}

bool SqliteTable::_step(sqlite3_stmt* statement, const char* address, size_t length) {
    sqlite3_bind_text(statement, 1, address, static_cast<int>(length), SQLITE_STATIC);
    const int result = sqlite3_step(statement);
    sqlite3_reset(statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) fail(sqlite3_errmsg(_database));
    return result == SQLITE_ROW;
}

Peer sqliteTable(const Entries& entries) {
    return makePeer("SQLite, lower-cased", std::make_unique<DatabaseTable>(entries));
}

}  // namespace bench
