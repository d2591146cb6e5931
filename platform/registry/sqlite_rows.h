// The rows of a store's database: their checksums and their totals.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "node.h"

namespace zxreg {

// Computes checksums; keeps its buffer. Each covers everything that a row holds, its ids included, so that a row is
// neither altered nor moved unnoticed.
class Checksums {
public:
    uint64_t ofNode(uint64_t id, uint64_t parent, std::string_view name);
    uint64_t ofNode(const Node& node) { return ofNode(node.id, node.parent->id, node.name()); }
    uint64_t ofValue(uint64_t node, const Value& value);
    // Of the journal's entry of one revision.
    uint64_t ofEntry(uint64_t revision, std::string_view touched);
    uint64_t ofBytes(std::string_view bytes);

private:
    std::string _buffer;
};

// How many rows there are, and the sum of their checksums: a row that is missing, or one too many, shows.
struct Totals {
    uint64_t nodes = 0;
    uint64_t values = 0;
    uint64_t sum = 0;

    void addNode(uint64_t checksum) { ++nodes, sum += checksum; }
    void dropNode(uint64_t checksum) { --nodes, sum -= checksum; }
    void addValue(uint64_t checksum) { ++values, sum += checksum; }
    void dropValue(uint64_t checksum) { --values, sum -= checksum; }

    bool operator==(const Totals& other) const {
        return nodes == other.nodes && values == other.values && sum == other.sum;
    }
};

// The one row about the store as a whole.
struct Meta {
    uint64_t revision = 0;  // of the last commit; 0: nothing has been read yet
    uint64_t nextNode = 0;
    uint64_t nextValue = 0;
    Totals totals;
    std::string fingerprint;  // of the key of the protected strings; empty before the first

    // Everything, as bytes for the checksum.
    std::string packed() const;
};

// What a commit has touched: pairs of a node's id and a value's, or 0 for the node itself.
using Touched = std::vector<std::pair<uint64_t, uint64_t>>;

// Touching more than this is not listed, but read again as a whole by others; packed as no bytes at all.
constexpr size_t maxTouched = 4096;
std::string packTouched(Touched touched);
// False when the bytes are no such list; the empty list stands for everything.
bool unpackTouched(std::string_view bytes, Touched& touched);

}  // namespace zxreg
