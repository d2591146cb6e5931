// CacheContent: the addresses of a cache and all orders and tables over them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "addrlist/folded_text.h"
#include "addrlist/reader_gate.h"
#include "addrlist/ref_table.h"
#include "addrlist/text_arena.h"
#include "addrlist/wildcard_index.h"

namespace zxpol {

// The two lists of a cache.
enum class ListKind : uint8_t { wildcard, exact };

/*
 * Items are references to the texts, which ascend in the order of insertion. One writer at a time; `find` and
 * `patterns` may be used meanwhile by readers with a pass through the gate, everything else is the writer's, or theirs
 * who keep the writer away.
 */
class CacheContent : public Retirable {
public:
    using Items = std::vector<uint32_t>;
    static constexpr uint32_t none = RefTable::none;

    explicit CacheContent(ReaderGate& gate);

    // ---- for readers, too ----

    // The item of a list with the sort key `key`, or `none`.
    uint32_t find(const FoldedKey& key, ListKind list) const {
        return tableOf(list).find(key.hash(), [&](uint32_t item) { return hasKey(item, key); });
    }
    // Has the processor fetch what `find` will look at.
    void prefetch(const FoldedKey& key, ListKind list) const { tableOf(list).prefetch(key.hash()); }
    void prefetch(uint32_t item) const { _texts.prefetch(item); }
    const WildcardIndex& patterns() const { return _patterns; }
    std::string_view text(uint32_t item) const { return _texts.text(item); }

    // ---- for the writer ----

    // Adds an address that the list does not hold; a NUL follows its text. When it throws, nothing has changed.
    void add(std::string_view address, const FoldedKey& key, ListKind list);
    // Removes an item; `key` is its key. When it throws, nothing has changed.
    void remove(uint32_t item, const FoldedKey& key, ListKind list);

    uint32_t size() const { return static_cast<uint32_t>(_tables[0].size() + _tables[1].size()); }

    // Whether most of the texts are those of removed items.
    bool isSparse() const;
    // Adds all items of another content, in their order.
    void addAllOf(CacheContent& other);

    // The orders. They are made by `prepare`, and stay until the next change.
    bool isUserOrderReady() const { return _removed.empty(); }
    bool areSortedReady() const { return _isSorted; }
    void prepareUserOrder();
    void prepareSorted();
    const Items& userOrder() const { return _userOrder; }
    const Items& sorted(ListKind list) const { return _sorted[static_cast<size_t>(list)]; }

private:
    RefTable& tableOf(ListKind list) { return _tables[static_cast<size_t>(list)]; }
    const RefTable& tableOf(ListKind list) const { return _tables[static_cast<size_t>(list)]; }
    ListKind listOf(uint32_t item) const;
    bool hasKey(uint32_t item, const FoldedKey& key) const;
    void makeRoom(ListKind list);
    void forgetSorted();

    TextArena _texts;
    RefTable _tables[2];
    WildcardIndex _patterns;

    Items _userOrder;  // with the removed items, until it is prepared
    Items _removed;
    uint64_t _removedBytes = 0;
    Items _sorted[2];
    bool _isSorted = false;
};

}  // namespace zxpol
