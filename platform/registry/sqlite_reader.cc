#include "sqlite_reader.h"

#include <algorithm>

#include "failure.h"
#include "secret.h"

namespace zxreg {
namespace {

constexpr uint32_t maxValueSize = ZXREG_MAX_VALUE + sealOverhead;
constexpr uint64_t mostRowsToExpect = 1 << 20;  // room made beforehand, whatever number the database gives

bool isValueSound(const Value& value) {
    if (value.name().size() > ZXREG_MAX_NAME || value.size > maxValueSize) return false;
    if (value.type == ZXREG_NUMBER) return value.size == sizeof(uint32_t);
    return value.type <= ZXREG_MULTI_STRING && (value.type != ZXREG_PROTECTED_STRING || value.size >= sealOverhead);
}

}  // namespace

SqliteReader::SqliteReader(Database& database)
    : _meta(database,
            "SELECT revision, next_node, next_value, nodes, vals, sum, fingerprint, checksum FROM meta WHERE id = 1"),
      _nodes(database, "SELECT id, parent, name, checksum FROM node ORDER BY id"),
      _values(database, "SELECT id, node, type, name, data, checksum FROM value ORDER BY id"),
      _node(database, "SELECT id, parent, name, checksum FROM node WHERE id = ?"),
      _value(database, "SELECT id, node, type, name, data, checksum FROM value WHERE id = ?"),
      _entries(database, "SELECT revision, touched, checksum FROM journal WHERE revision > ? ORDER BY revision") {}

Meta SqliteReader::meta() {
    Query query(_meta);
    if (!query.step()) throw Damage("its head is missing");
    Meta meta;
    meta.revision = query.numberAt(0);
    meta.nextNode = query.numberAt(1);
    meta.nextValue = query.numberAt(2);
    meta.totals = {query.numberAt(3), query.numberAt(4), query.numberAt(5)};
    meta.fingerprint = query.bytesAt(6);
    if (meta.revision == 0 || _checksums.ofBytes(meta.packed()) != query.numberAt(7)) throw Damage("its head");
    return meta;
}

Delta SqliteReader::everything(const Meta& now) {
    Delta delta;
    delta.whole = true;
    delta.nodes.reserve(static_cast<size_t>(std::min(now.totals.nodes, mostRowsToExpect)));
    delta.values.reserve(static_cast<size_t>(std::min(now.totals.values, mostRowsToExpect)));
    Totals totals;
    uint64_t checksum = 0;
    uint64_t last = Tree::rootId;
    for (Query query(_nodes); query.step(); last = delta.nodes.back().id) {
        delta.nodes.push_back(nodeRow(query, checksum));
        if (delta.nodes.back().id <= last) throw Damage("the order of its keys");
        totals.addNode(checksum);
    }
    if (last >= now.nextNode) throw Damage("the number of its next key");
    last = 0;
    for (Query query(_values); query.step(); last = delta.values.back().value->id) {
        delta.values.push_back(valueRow(query, checksum));
        if (delta.values.back().value->id <= last) throw Damage("the order of its values");
        totals.addValue(checksum);
    }
    if (last >= now.nextValue) throw Damage("the number of its next value");
    if (!(totals == now.totals)) throw Damage("keys or values are missing");
    return delta;
}

std::optional<Delta> SqliteReader::since(const Meta& known, const Meta& now, const Tree& tree) {
    Touched touched;
    if (known.revision == 0 || !touchedSince(known, now, touched)) return std::nullopt;
    std::sort(touched.begin(), touched.end());
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    Delta delta;
    Totals totals = known.totals;
    for (const auto& [node, value] : touched) {
        if (value == 0) lookAtNode(node, tree, totals, delta);
    }
    for (const auto& [node, value] : touched) {
        const bool isGone = std::binary_search(delta.goneNodes.begin(), delta.goneNodes.end(), node);
        if (value != 0 && !isGone) lookAtValue(node, value, tree, totals, delta);
    }
    if (!(totals == now.totals)) return std::nullopt;
    return delta;
}

// What the commits after `known` have touched; false when the journal does not reach back that far or lists not all.
bool SqliteReader::touchedSince(const Meta& known, const Meta& now, Touched& touched) {
    uint64_t revision = known.revision;
    Query query(_entries);
    query.number(known.revision);
    while (query.step()) {
        const std::string_view bytes = query.bytesAt(1);
        if (query.numberAt(0) != ++revision || bytes.empty()) return false;
        if (_checksums.ofEntry(revision, bytes) != query.numberAt(2) || !unpackTouched(bytes, touched)) {
            throw Damage("its journal");
        }
    }
    return revision == now.revision;
}

void SqliteReader::lookAtNode(uint64_t id, const Tree& tree, Totals& totals, Delta& delta) {
    const Node* held = tree.node(id);
    Query query(_node);
    query.number(id);
    if (query.step()) {
        if (held != nullptr) return;
        uint64_t checksum = 0;
        delta.nodes.push_back(nodeRow(query, checksum));
        totals.addNode(checksum);
    } else if (held != nullptr) {
        delta.goneNodes.push_back(id);
        totals.dropNode(_checksums.ofNode(*held));
        for (size_t i = 0; i < held->values.size(); ++i) {
            totals.dropValue(_checksums.ofValue(id, held->values.at(i)));
        }
    }
}

void SqliteReader::lookAtValue(uint64_t node, uint64_t id, const Tree& tree, Totals& totals, Delta& delta) {
    const Node* owner = tree.node(node);
    const Value* held = owner != nullptr ? owner->values.findId(id) : nullptr;
    if (held != nullptr) totals.dropValue(_checksums.ofValue(node, *held));
    Query query(_value);
    query.number(id);
    if (query.step()) {
        uint64_t checksum = 0;
        delta.values.push_back(valueRow(query, checksum));
        if (delta.values.back().node != node) throw Damage("a value has changed its key");
        totals.addValue(checksum);
    } else if (held != nullptr) {
        delta.goneValues.emplace_back(node, id);
    }
}

NodeRow SqliteReader::nodeRow(Query& query, uint64_t& checksum) {
    NodeRow row{query.numberAt(0), query.numberAt(1), std::string(query.bytesAt(2))};
    checksum = query.numberAt(3);
    const bool isSound = !row.name.empty() && row.name.size() <= ZXREG_MAX_NAME &&
                         row.name.find_first_of(std::string_view("\\\0", 2)) == std::string::npos;
    if (!isSound || _checksums.ofNode(row.id, row.parent, row.name) != checksum) throw Damage("a key");
    return row;
}

ValueRow SqliteReader::valueRow(Query& query, uint64_t& checksum) {
    const std::string_view name = query.bytesAt(3);
    const std::string_view data = query.bytesAt(4);
    const uint64_t type = query.numberAt(2);
    checksum = query.numberAt(5);
    if (data.size() > maxValueSize || name.size() > ZXREG_MAX_NAME || type > ZXREG_MULTI_STRING) {
        throw Damage("a value");
    }
    ValueRow row{query.numberAt(1), Value::make(query.numberAt(0), name, static_cast<uint32_t>(type), data.data(),
                                                static_cast<uint32_t>(data.size()))};
    if (!isValueSound(*row.value) || _checksums.ofValue(row.node, *row.value) != checksum) throw Damage("a value");
    return row;
}

}  // namespace zxreg
