// A cache of addresses that is slow and obvious: sorted vectors, searched from the front.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "addrlist/addr_cache.h"

namespace model {

// -1, 0 or 1, by bytes, capital letters as small ones.
int compareFolded(const std::string& a, const std::string& b);

// An address as a sorted list compares it: without the quotes around words of its local part.
std::string sortKeyOf(const std::string& address);

class CacheModel {
public:
    using ListType = ZxPolAddrCache::ListType;

    static ListType listOf(const std::string& address);

    void insert(const std::string& address, ListType type);
    // False when the list does not have it.
    bool remove(const std::string& address, ListType type);
    bool find(const std::string& address, ListType type) const;

    // Raises `weight` to the largest weight of the entries that match.
    bool match(const std::string& address, ListType type, uint32_t& weight, ZxPolMatchWeightType kind) const;
    // First the exact list and then, when that has no answer, the wildcard list; the weight begins with 0.
    bool matchList(const std::string& address, uint32_t& weight, ZxPolMatchWeightType kind) const;

    size_t size() const { return _user.size(); }
    // Nothing past the end, and at the place of the descending order that lists no entry.
    std::optional<std::string> inUserOrder(size_t index) const;
    std::optional<std::string> inAlphaOrder(size_t index, bool isAscending) const;

    void clear();

private:
    struct Item {
        std::string text;
        std::string key;
        uint64_t number;  // of the insertion
    };
    using Items = std::vector<Item>;

    Items& itemsOf(ListType type) { return type == ZxPolAddrCache::WildCardList ? _wildcards : _exact; }
    const Items& itemsOf(ListType type) const { return type == ZxPolAddrCache::WildCardList ? _wildcards : _exact; }
    static size_t lowerBound(const Items& items, const std::string& key);
    static bool isAt(const Items& items, size_t place, const std::string& key);

    Items _exact;
    Items _wildcards;
    Items _user;
    uint64_t _insertions = 0;
};

}  // namespace model
