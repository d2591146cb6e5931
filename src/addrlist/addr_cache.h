// ZxPolAddrCache: the addresses of one normal list, in memory.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "addrlist/reader_gate.h"
#include "zxbase.h"
#include "zxpolicy.h"

namespace zxpol {
class CacheContent;
class FoldedKey;
}  // namespace zxpol

/// One address of a cache: its text exactly as it was inserted, and its place in the user order.
struct ZXPOL_API _ZxPolAddrCacheItem {
    const char* address;  ///< the text, which belongs to the cache
    uint32_t position;    ///< from 0

    /// An entry with its place.
    _ZxPolAddrCacheItem(const char* text, uint32_t place) : address(text), position(place) {}
};

/**
 * The addresses of one normal list, in memory.
 *
 * Invariants: plain addresses are in the exact list, entries with a "*" in the wildcard list; both keep their entries
 * sorted by sort key, and the user order has all of them in the order of insertion. The sort key of an address is its
 * text without the quotes around words of the local part; keys are compared as kr_stricmp does. Two entries of one list
 * with the same key are the same entry, and only the first is kept.
 *
 * Any number of threads may use a cache at once. Changes take its lock for writing, enumeration takes it for reading;
 * finding and matching take none: they read what was published last and never wait. An entry is found from the moment
 * on that its insertion returns. Texts that are handed out stay valid until the next change of the cache.
 *
 * Costs: finding an address reads about two places in memory, however long the list. Matching against the wildcard list
 * looks up the address's own name and each end of its domain; entries in which wildcards stand elsewhere than where
 * ZxPolCondWildcardPattern::isPatternValid allows them, or which need interpretation, are compared one by one. Sorted
 * orders are made when they are first asked for after a change.
 */
class ZXPOL_API ZxPolAddrCache {
public:
    /// The two lists of a cache.
    enum ListType : uint32_t {
        WildCardList = 0,  ///< entries with a "*"
        ExactList = 1      ///< all others
    };

    /// The entries of one of the two lists in sorted order, as they are while nothing changes.
    class ItemList {
    public:
        /// The number of entries.
        size_t size() const;
        /// The entry at `index`, which must be below size().
        _ZxPolAddrCacheItem operator[](size_t index) const;

    private:
        friend class ZxPolAddrCache;
        ItemList(const zxpol::CacheContent& content, const std::vector<uint32_t>& items)
            : _content(content), _items(items) {}

        const zxpol::CacheContent& _content;
        const std::vector<uint32_t>& _items;
    };

    /// The list that an address belongs to.
    static ListType listOf(const char* address);

    ZxPolAddrCache();
    ~ZxPolAddrCache();
    ZxPolAddrCache(const ZxPolAddrCache&) = delete;
    ZxPolAddrCache& operator=(const ZxPolAddrCache&) = delete;

    /// Adds the address unless the list has it. Types other than WildCardList mean the exact list. A null address
    /// counts as present. Reports success; std::bad_alloc leaves the cache as it was.
    void insertAddress(const char* address, ListType type, int* error);

    /// Adds a row of addresses, each to the list that it belongs to. Returns how many were there already.
    size_t insertAddresses(const char* const* addresses, size_t count);

    /// Removes the address. ZXPOL_E_NOT_FOUND.
    void removeAddress(const char* address, ListType type, int* error);

    /// Whether the list has an entry of the same key.
    bool findAddress(const char* address, ListType type) const;

    /// The same for callers with a row of addresses to come, who make the keys beforehand, once: `prefetch` has the
    /// processor fetch what the others will look at. `key` is the key of `address`; inserting tells whether the
    /// list did not have it yet.
    void prefetch(const zxpol::FoldedKey& key, ListType type) const;
    /// @overload
    bool findAddress(const zxpol::FoldedKey& key, ListType type) const;
    /// @overload
    bool insertAddress(const char* address, const zxpol::FoldedKey& key, ListType type);

    /// Whether an entry of the list matches `address`: in the exact list one of the same key, which weighs the most
    /// that there is; in the wildcard list any whose pattern matches. *weight, where it is not null, is raised to the
    /// largest weight of all entries that match, and never lowered. Any other type is asserted not to be.
    bool matchAddress(const char* address, ListType type, uint32_t* weight, ZxPolMatchWeightType kind) const;

    /// Whether any entry of the two lists matches `address`. *weight, where it is not null, becomes the largest weight
    /// of all that match, 0 when none does. The wildcard list is not asked when the exact one has the address.
    bool matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType kind) const;

    /// The `index`-th address in the order that the environment variable "order" names when the call is made: the user
    /// order for "user" or no such variable, the descending order for "decending" (spelled so), else the ascending one.
    /// *size is the buffer's capacity on entry and the address's length with NUL on return, also when that is too much:
    /// ZXPOL_E_BUFFER_TOO_SMALL. ZXPOL_E_NO_MORE_ITEMS: past the end.
    void enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// The text at a place of the user order, or null where there is none.
    const char* getUserOrder(uint32_t index);

    /// The text at a place of a sorted order, or null where there is none. Ascending: the wildcard list, then the exact
    /// list. Descending: the wildcard list backwards, then the exact list backwards from its next-to-last entry on; its
    /// last entry is not listed, and the last place of all is empty.
    const char* getAlphaOrder(uint32_t index, bool ascending);

    /// The entries of a list in sorted order. The caller sees to it that nothing changes meanwhile.
    ItemList _itemsOf(ListType type);

    /// The position of the first item whose sort key is not less than `key`, which is a sort key.
    size_t _lowerBound(const char* key, const ItemList& items) const;

    /// Removes all addresses.
    void clear();

    /// The number of addresses.
    uint32_t size();

    /// The text of an entry that matches `address`, as matchAddress finds it: of the wildcard entries the one of the
    /// largest weight. Empty when none does.
    std::string findMatch(const char* address, ListType type, ZxPolMatchWeightType kind) const;

private:
    template <class Look>
    auto _lookAtOrder(bool isSorted, Look look) -> decltype(look());
    const char* _textAt(uint32_t index, bool isSorted, bool isAscending) const;
    const zxpol::CacheContent& _published() const { return *_content.load(std::memory_order_seq_cst); }
    void _publish(std::unique_ptr<zxpol::CacheContent> content) noexcept;

    mutable zxpol::ReaderGate _gate;
    KR::CRWLock _lock;
    std::atomic<zxpol::CacheContent*> _content;
};
