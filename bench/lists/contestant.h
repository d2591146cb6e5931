// Those who answer whether a list has an address: ours and the peers, behind one interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "addresses.h"

namespace bench {

class Contestant {
public:
    virtual ~Contestant() = default;

    // Answers the first `count` queries: the weight of the best entry that matches, 0 without any.
    virtual void answer(const Queries& queries, size_t count, uint32_t* weights) = 0;
};

// A contestant, or the reason why there is none.
struct Peer {
    std::string name;
    std::unique_ptr<Contestant> contestant;
    std::string excuse;
    double limit = 0;  // how ours may compare, as in Rival
};

inline Peer makePeer(std::string name, std::unique_ptr<Contestant> contestant) {
    return {std::move(name), std::move(contestant), "", 0};
}

inline Peer noPeer(std::string name, std::string excuse) {
    return {std::move(name), nullptr, std::move(excuse), 0};
}

using Entries = std::vector<std::string>;

// The weight of an address that is in the list itself.
constexpr uint32_t weightOfAddress = 5000;

// The peers have no packages of 32 bits.
constexpr bool hasPeers = sizeof(void*) == 8;

// The peers on exact addresses. All hold them lower-cased.
Peer loweringHashSet(const Entries& entries);                     // is given addresses as they are
Peer hashSet(const Entries& entries);                             // this and the others: lower-cased, with their length
Peer cdbFile(const Entries& entries, const std::string& folder);  // mapped, in the page cache
Peer sqliteTable(const Entries& entries);                         // in memory, prepared statement

// The peers on wildcard entries, as equivalent regular expressions that ignore letter case.
Peer hyperscan(const Entries& entries);
Peer re2Set(const Entries& entries);

// The expression for a wildcard entry. What stands before "@" matters only where it is no "*", and addresses have one
// "@".
std::string expressionOf(const std::string& entry);

// The weight of a wildcard entry.
uint32_t weightOf(const std::string& entry);

// Bytes of resident memory that a flat_hash_set of the addresses takes, or 0 when it is not installed.
double hashSetBytes(const Entries& entries);

}  // namespace bench
