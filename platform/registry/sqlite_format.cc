#include "sqlite_format.h"

#include <sys/stat.h>

#include <cerrno>

#include "failure.h"
#include "files.h"
#include "sqlite_rows.h"
#include "tree.h"

namespace zxreg {
namespace {

constexpr uint64_t applicationId = 0x5a585247;
constexpr uint64_t formatVersion = 1;

// Keys and values are never renumbered: their ids give the order of creation. The root key is not stored.
constexpr char schema[] =
    "PRAGMA application_id = 1515737671;"
    "PRAGMA user_version = 1;"
    "CREATE TABLE meta(id INTEGER PRIMARY KEY, revision INTEGER NOT NULL, next_node INTEGER NOT NULL,"
    " next_value INTEGER NOT NULL, nodes INTEGER NOT NULL, vals INTEGER NOT NULL, sum INTEGER NOT NULL,"
    " fingerprint BLOB NOT NULL, checksum INTEGER NOT NULL);"
    "CREATE TABLE node(id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, name BLOB NOT NULL,"
    " checksum INTEGER NOT NULL);"
    "CREATE TABLE value(id INTEGER PRIMARY KEY, node INTEGER NOT NULL, type INTEGER NOT NULL, name BLOB NOT NULL,"
    " checksum INTEGER NOT NULL, data BLOB NOT NULL);"
    "CREATE TABLE journal(revision INTEGER PRIMARY KEY, touched BLOB NOT NULL, checksum INTEGER NOT NULL);";
static_assert(applicationId == 1515737671 && formatVersion == 1, "as the schema says");

void writeFirstMeta(Database& database) {
    Meta meta;
    meta.revision = 1;
    meta.nextNode = Tree::rootId + 1;
    meta.nextValue = 1;
    Statement statement(database, "INSERT INTO meta VALUES(1, ?, ?, ?, 0, 0, 0, ?, ?)");
    Query(statement)
        .number(meta.revision)
        .number(meta.nextNode)
        .number(meta.nextValue)
        .bytes(meta.fingerprint)
        .number(Checksums().ofBytes(meta.packed()))
        .run();
}

// The database is filled under another name first, so that under its own it is whole from the beginning.
void makeStoreFile(const std::string& path) {
    struct stat status {};
    if (stat((path + "-wal").c_str(), &status) == 0) {
        // Another process may have made the store in the meantime.
        if (stat(path.c_str(), &status) == 0) return;
        throw Failure(ZXREG_E_CORRUPT, path + ": the database is missing, but its write-ahead log is there.");
    }
    NewFile file(path);
    {
        Database database(file.name());
        database.execute("PRAGMA synchronous = FULL; BEGIN");
        database.execute(schema);
        writeFirstMeta(database);
        database.execute("COMMIT");
        database.execute("PRAGMA journal_mode = WAL");
    }
    file.publish();
}

// Throws unless the path leads to a file that may be a database.
void checkFile(const std::string& path, const struct stat& status) {
    if (S_ISDIR(status.st_mode)) throwFileFailure(path, "cannot be opened", EISDIR);
    if (!S_ISREG(status.st_mode)) throw Failure(ZXREG_E_FOREIGN, path + ": not a regular file.");
    if (status.st_size == 0) throw Failure(ZXREG_E_FOREIGN, path + ": the file is empty; it is not a store.");
}

void checkFormat(const std::string& path, Database& database) {
    if (database.pragma("PRAGMA application_id") != applicationId) {
        throw Failure(ZXREG_E_FOREIGN, path + ": a database of another application.");
    }
    if (database.pragma("PRAGMA user_version") != formatVersion) {
        throw Failure(ZXREG_E_FOREIGN, path + ": a store of another version.");
    }
}

// A database that may only be read is taken in whatever mode it is in.
void setModes(const std::string& path, Database& database) {
    if (sqlite3_db_readonly(database.get(), "main") == 0) {
        Statement statement(database, "PRAGMA journal_mode = WAL");
        Query query(statement);
        if (!query.step() || query.bytesAt(0) != "wal") {
            throw Failure(ZXREG_E_IO, path + ": the database cannot be put into write-ahead mode.");
        }
    }
    database.execute("PRAGMA synchronous = FULL; PRAGMA cell_size_check = ON; PRAGMA cache_size = -1024");
    database.prepareRollback();
}

}  // namespace

Database openStoreDatabase(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) throwFileFailure(path, "cannot be opened", errno);
        makeStoreFile(path);
        if (stat(path.c_str(), &status) != 0) throwFileFailure(path, "cannot be opened", errno);
    }
    checkFile(path, status);
    Database database(path);
    checkFormat(path, database);
    setModes(path, database);
    return database;
}

}  // namespace zxreg
