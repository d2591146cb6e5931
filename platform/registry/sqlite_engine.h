// The engine that keeps a store in a SQLite database, shared with other processes.
#pragma once

#include "engine.h"
#include "key_file.h"
#include "sqlite_db.h"
#include "sqlite_reader.h"
#include "sqlite_rows.h"
#include "wal_watch.h"

namespace zxreg {

// One row for each key and each value. Every commit raises the store's revision and enters the ids that it touched into
// the journal, from which other processes learn what to read again. Must not be carried over a fork.
class SqliteEngine : public Engine {
public:
    explicit SqliteEngine(const std::string& path);

    bool isCurrent() const noexcept override { return _watch.isAttached() && _watch.isUnchanged(); }
    void refresh(Tree& tree) override;
    bool tryBegin(Tree& tree) override;
    void checkWritable() const override;
    void record(const Change& change) override;
    void commit(const Tree& tree) override;
    void rollback() noexcept override;
    const SecretKey& sealingKey() override;
    const SecretKey& openingKey() override;

private:
    void bringIn(Tree& tree);
    void rememberSeen(Tree& tree, const std::optional<WalWatch::Header>& header);
    std::optional<WalWatch::Header> lookAtHeader() const;
    void distrust(Tree& tree) noexcept;

    void checkStructure();
    void addNode(const Node& node);
    void dropNode(const Node& node);
    void putValue(const Node& node, const Value& value);
    void dropValue(const Node& node, const Value& value);
    void enterRevision();
    void writeMeta();
    void runOnOneRow(Query& query);

    [[noreturn]] void throwDamage(const char* what) const;

    Database _database;
    const bool _isReadOnly;
    SqliteReader _reader;
    Statement _addNode;
    Statement _dropNode;
    Statement _putValue;
    Statement _dropValue;
    Statement _addEntry;
    Statement _pruneEntries;
    Statement _writeMeta;
    Checksums _checksums;
    KeyFile _keyFile;
    WalWatch _watch;

    Meta _meta;  // what the tree holds, or held when the transaction was opened
    bool _isInTransaction = false;
    bool _isStructureSound = false;
    Meta _pending;  // what the transaction will leave
    Touched _touched;
};

}  // namespace zxreg
