#include "sqlite_engine.h"

#include <mutex>

#include "failure.h"
#include "sqlite_format.h"

namespace zxreg {
namespace {

constexpr uint64_t revisionsKept = 128;  // in the journal; who is further behind reads everything again

}  // namespace

SqliteEngine::SqliteEngine(const std::string& path)
    : _database(openStoreDatabase(path)),
      _isReadOnly(sqlite3_db_readonly(_database.get(), "main") != 0),
      _reader(_database),
      _addNode(_database, "INSERT INTO node(id, parent, name, checksum) VALUES(?, ?, ?, ?)"),
      _dropNode(_database, "DELETE FROM node WHERE id = ?"),
      _putValue(_database, "REPLACE INTO value(id, node, type, name, data, checksum) VALUES(?, ?, ?, ?, ?, ?)"),
      _dropValue(_database, "DELETE FROM value WHERE id = ?"),
      _addEntry(_database, "INSERT INTO journal(revision, touched, checksum) VALUES(?, ?, ?)"),
      _pruneEntries(_database, "DELETE FROM journal WHERE revision <= ?"),
      _writeMeta(_database,
                 "UPDATE meta SET revision = ?, next_node = ?, next_value = ?, nodes = ?, vals = ?, sum = ?,"
                 " fingerprint = ?, checksum = ? WHERE id = 1"),
      _keyFile(path + ".key") {}

void SqliteEngine::refresh(Tree& tree) {
    if (_isInTransaction) return;
    _database.checkPlace();
    // Looked at first: what is committed after it makes the next comparison fail.
    const std::optional<WalWatch::Header> header = lookAtHeader();
    {
        const ReadTransaction transaction(_database);
        bringIn(tree);
    }
    rememberSeen(tree, header);
}

bool SqliteEngine::tryBegin(Tree& tree) {
    if (_isReadOnly) return refresh(tree), true;
    _database.checkPlace();
    const std::optional<WalWatch::Header> header = lookAtHeader();
    if (!_database.tryBeginImmediate()) return false;
    try {
        bringIn(tree);
        rememberSeen(tree, header);
        _pending = _meta;
        _touched.clear();
    } catch (...) {
        _database.rollback();
        throw;
    }
    _isInTransaction = true;
    return true;
}

void SqliteEngine::checkWritable() const {
    if (_isReadOnly) throw Failure(ZXREG_E_PERMISSION, _database.path() + ": the file may only be read.");
}

// Brings the tree from the state of `_meta` to that of the open transaction. When that fails, the next attempt reads
// everything again, and until it succeeds every read of the store fails.
void SqliteEngine::bringIn(Tree& tree) {
    try {
        const Meta now = _reader.meta();
        if (now.revision == _meta.revision) return;
        std::optional<Delta> delta = _reader.since(_meta, now, tree);
        if (!delta) {
            delta = _reader.everything(now);
            sqlite3_db_release_memory(_database.get());
        }
        const std::lock_guard guard(tree.lock);
        tree.apply(std::move(*delta));
        tree.setNextIds(now.nextNode, now.nextValue);
        _meta = now;
    } catch (const Damage& damage) {
        distrust(tree);
        throwDamage(damage.what());
    } catch (...) {
        distrust(tree);
        throw;
    }
}

// What the tree holds may be wrong from now on.
void SqliteEngine::distrust(Tree& tree) noexcept {
    _meta.revision = 0;
    const std::lock_guard guard(tree.lock);
    _watch.forget();
}

void SqliteEngine::throwDamage(const char* what) const {
    throw Failure(ZXREG_E_CORRUPT, _database.path() + ": the store is damaged: " + what + ".");
}

// Empty when there is no header to look at: then every read looks at the database.
std::optional<WalWatch::Header> SqliteEngine::lookAtHeader() const {
    return _watch.isAttached() ? std::make_optional(_watch.look()) : std::nullopt;
}

void SqliteEngine::rememberSeen(Tree& tree, const std::optional<WalWatch::Header>& header) {
    const std::lock_guard guard(tree.lock);
    if (header) {
        _watch.remember(*header);
    } else {
        _watch.attach(_database.get());
    }
}

void SqliteEngine::rollback() noexcept {
    _database.rollback();
    _isInTransaction = false;
}

void SqliteEngine::commit(const Tree& tree) {
    ++_pending.revision;
    _pending.nextNode = tree.nextNodeId();
    _pending.nextValue = tree.nextValueId();
    enterRevision();
    writeMeta();
    _database.execute("COMMIT");
    _meta = std::move(_pending);
    _isInTransaction = false;
}

void SqliteEngine::enterRevision() {
    const std::string touched = packTouched(std::move(_touched));
    _touched.clear();
    const uint64_t checksum = _checksums.ofEntry(_pending.revision, touched);
    Query(_addEntry).number(_pending.revision).bytes(touched).number(checksum).run();
    if (_pending.revision > revisionsKept) Query(_pruneEntries).number(_pending.revision - revisionsKept).run();
}

void SqliteEngine::writeMeta() {
    Query query(_writeMeta);
    query.number(_pending.revision).number(_pending.nextNode).number(_pending.nextValue);
    query.number(_pending.totals.nodes).number(_pending.totals.values).number(_pending.totals.sum);
    query.bytes(_pending.fingerprint).number(_checksums.ofBytes(_pending.packed()));
    runOnOneRow(query);
}

const SecretKey& SqliteEngine::sealingKey() {
    const SecretKey& key = _keyFile.presentKeyOf(_pending.fingerprint);
    if (_pending.fingerprint.empty()) _pending.fingerprint = key.fingerprint();
    return key;
}

const SecretKey& SqliteEngine::openingKey() {
    const std::string& fingerprint = _isInTransaction ? _pending.fingerprint : _meta.fingerprint;
    if (fingerprint.empty()) throwDamage("it knows no key for its protected strings");
    return _keyFile.keyOf(fingerprint);
}

}  // namespace zxreg
