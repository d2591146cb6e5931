// Reads a store's database into changes for its tree, and believes nothing that its checksums do not cover.
#pragma once

#include <optional>

#include "sqlite_db.h"
#include "sqlite_rows.h"
#include "tree.h"

namespace zxreg {

// All functions are called inside a transaction and throw a Failure, or Damage when anything does not fit together.
class SqliteReader {
public:
    explicit SqliteReader(Database& database);

    Meta meta();

    // All there is.
    Delta everything(const Meta& now);

    // What has changed since `known`, which is what the tree holds; empty when that cannot be told any more.
    std::optional<Delta> since(const Meta& known, const Meta& now, const Tree& tree);

private:
    NodeRow nodeRow(Query& query, uint64_t& checksum);
    ValueRow valueRow(Query& query, uint64_t& checksum);
    bool touchedSince(const Meta& known, const Meta& now, Touched& touched);
    void lookAtNode(uint64_t id, const Tree& tree, Totals& totals, Delta& delta);
    void lookAtValue(uint64_t node, uint64_t id, const Tree& tree, Totals& totals, Delta& delta);

    Statement _meta;
    Statement _nodes;
    Statement _values;
    Statement _node;
    Statement _value;
    Statement _entries;
    Checksums _checksums;
};

}  // namespace zxreg
