// Writing the changes of a tree into the open transaction.
#include "failure.h"
#include "sqlite_engine.h"

namespace zxreg {

void SqliteEngine::record(const Change& change) {
    checkStructure();
    switch (change.kind) {
        case Change::Kind::NodeAdded:
            addNode(*change.node);
            break;
        case Change::Kind::NodeRemoved:
            dropNode(*change.node);
            break;
        case Change::Kind::ValueChanged:
            if (change.before && change.after == nullptr) {
                dropValue(*change.node, *change.before);
                break;
            }
            if (change.before) _pending.totals.dropValue(_checksums.ofValue(change.node->id, *change.before));
            putValue(*change.node, *change.after);
    }
}

// Whatever is read has its checksums, but what is free is not read: a page that is in use and listed as free would be
// written over. So the first change looks at the whole file.
void SqliteEngine::checkStructure() {
    if (_isStructureSound) return;
    Statement statement(_database, "PRAGMA quick_check(1)");
    Query query(statement);
    if (!query.step() || query.bytesAt(0) != "ok") throwDamage("its pages");
    _isStructureSound = true;
}

void SqliteEngine::addNode(const Node& node) {
    const uint64_t checksum = _checksums.ofNode(node);
    _touched.emplace_back(node.id, 0);
    Query(_addNode).number(node.id).number(node.parent->id).bytes(node.name()).number(checksum).run();
    _pending.totals.addNode(checksum);
    for (size_t i = 0; i < node.values.size(); ++i) {
        putValue(node, node.values.at(i));
    }
}

void SqliteEngine::dropNode(const Node& node) {
    for (size_t i = 0; i < node.values.size(); ++i) {
        dropValue(node, node.values.at(i));
    }
    _touched.emplace_back(node.id, 0);
    Query query(_dropNode);
    runOnOneRow(query.number(node.id));
    _pending.totals.dropNode(_checksums.ofNode(node));
}

void SqliteEngine::putValue(const Node& node, const Value& value) {
    const uint64_t checksum = _checksums.ofValue(node.id, value);
    _touched.emplace_back(node.id, value.id);
    Query query(_putValue);
    query.number(value.id).number(node.id).number(value.type).bytes(value.name());
    query.bytes({value.data(), value.size}).number(checksum).run();
    _pending.totals.addValue(checksum);
}

void SqliteEngine::dropValue(const Node& node, const Value& value) {
    _touched.emplace_back(node.id, value.id);
    Query query(_dropValue);
    runOnOneRow(query.number(value.id));
    _pending.totals.dropValue(_checksums.ofValue(node.id, value));
}

// A row that the tree holds is there, or the database is not what was read.
void SqliteEngine::runOnOneRow(Query& query) {
    query.run();
    if (sqlite3_changes(_database.get()) != 1) throwDamage("a row that was there is missing");
}

}  // namespace zxreg
