#include "addrlist/addr_cache.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>

#include "addrlist/cache_content.h"
#include "addrlist/coming_keys.h"
#include "addrlist/lock_guards.h"
#include "pattern/priority.h"

using namespace zxpol;

namespace {

ListKind kindOf(ZxPolAddrCache::ListType type) {
    return type == ZxPolAddrCache::WildCardList ? ListKind::wildcard : ListKind::exact;
}

// The text at a place of a sorted order. Texts of neighbours lie far apart, and will mostly be asked for next.
const char* textOf(const CacheContent& content, const CacheContent::Items& items, size_t place, bool isAscending) {
    constexpr size_t ahead = 8;
    const size_t coming = isAscending ? place + ahead : place - ahead;
    if (coming < items.size()) content.prefetch(items[coming]);
    return content.text(items[place]).data();
}

}  // namespace

ZxPolAddrCache::ZxPolAddrCache() : _lock(nullptr), _content(new CacheContent(_gate)) {}

ZxPolAddrCache::~ZxPolAddrCache() {
    delete _content.load(std::memory_order_relaxed);
}

ZxPolAddrCache::ListType ZxPolAddrCache::listOf(const char* address) {
    return std::strchr(address, '*') != nullptr ? WildCardList : ExactList;
}

// ---- finding and matching: without a lock --------------------------------------------------------

bool ZxPolAddrCache::findAddress(const char* address, ListType type) const {
    return address != nullptr && findAddress(FoldedKey(address), type);
}

bool ZxPolAddrCache::findAddress(const FoldedKey& key, ListType type) const {
    const ReaderGate::Pass pass(_gate);
    return _published().find(key, kindOf(type)) != CacheContent::none;
}

void ZxPolAddrCache::prefetch(const FoldedKey& key, ListType type) const {
    const ReaderGate::Pass pass(_gate);
    _published().prefetch(key, kindOf(type));
}

bool ZxPolAddrCache::matchAddress(const char* address, ListType type, uint32_t* weight,
                                  ZxPolMatchWeightType kind) const {
    if (type == ExactList) {
        if (!findAddress(address, ExactList)) return false;
        if (weight != nullptr) *weight = ZxPolPriority::maxWeight();
        return true;
    }
    assert(type == WildCardList);
    if (type != WildCardList) return false;
    const ReaderGate::Pass pass(_gate);
    uint32_t found = 0;
    const uint32_t item = _published().patterns().findMatch(address, weight != nullptr ? &found : nullptr, kind);
    if (weight != nullptr) *weight = std::max(*weight, found);
    return item != CacheContent::none;
}

bool ZxPolAddrCache::matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType kind) const {
    if (weight != nullptr) *weight = ZxPolPriority::minWeight();
    const FoldedKey key(address != nullptr ? address : "");
    const ReaderGate::Pass pass(_gate);
    const CacheContent& content = _published();
    if (address != nullptr && content.find(key, ListKind::exact) != CacheContent::none) {
        if (weight != nullptr) *weight = ZxPolPriority::maxWeight();
        return true;
    }
    return content.patterns().findMatch(address, weight, kind) != CacheContent::none;
}

std::string ZxPolAddrCache::findMatch(const char* address, ListType type, ZxPolMatchWeightType kind) const {
    const FoldedKey key(address != nullptr ? address : "");
    const ReaderGate::Pass pass(_gate);
    const CacheContent& content = _published();
    uint32_t weight = 0;
    const uint32_t item =
        type == ExactList ? content.find(key, ListKind::exact) : content.patterns().findMatch(address, &weight, kind);
    return item == CacheContent::none ? std::string() : std::string(content.text(item));
}

// ---- changes -------------------------------------------------------------------------------------

void ZxPolAddrCache::insertAddress(const char* address, ListType type, int* error) {
    if (error == nullptr) return;
    *error = ZXPOL_S_OK;
    if (address != nullptr) insertAddress(address, FoldedKey(address), type);
}

bool ZxPolAddrCache::insertAddress(const char* address, const FoldedKey& key, ListType type) {
    const WriteLock lock(_lock);
    _gate.tidy();
    CacheContent& content = *_content.load(std::memory_order_relaxed);
    if (content.find(key, kindOf(type)) != CacheContent::none) return false;
    content.add(address, key, kindOf(type));
    return true;
}

size_t ZxPolAddrCache::insertAddresses(const char* const* addresses, size_t count) {
    ComingKeys keys(*this);
    const WriteLock lock(_lock);
    _gate.tidy();
    CacheContent& content = *_content.load(std::memory_order_relaxed);
    size_t present = 0;
    for (size_t index = 0; index < count; ++index) {
        const FoldedKey& key = keys.keyOf(index, [&](size_t i) { return i < count ? addresses[i] : nullptr; });
        const ListKind list = kindOf(listOf(addresses[index]));
        if (content.find(key, list) != CacheContent::none) {
            ++present;
        } else {
            content.add(addresses[index], key, list);
        }
    }
    return present;
}

void ZxPolAddrCache::removeAddress(const char* address, ListType type, int* error) {
    if (error == nullptr) return;
    *error = ZXPOL_E_NOT_FOUND;
    if (address == nullptr) return;
    const FoldedKey key(address);
    const WriteLock lock(_lock);
    _gate.tidy();
    CacheContent& content = *_content.load(std::memory_order_relaxed);
    const uint32_t item = content.find(key, kindOf(type));
    if (item == CacheContent::none) return;
    content.remove(item, key, kindOf(type));
    *error = ZXPOL_S_OK;
    if (!content.isSparse()) return;
    try {
        auto dense = std::make_unique<CacheContent>(_gate);
        dense->addAllOf(content);
        _publish(std::move(dense));
    } catch (const std::bad_alloc&) {
        // Then the room of what was removed is given back another time.
    }
}

void ZxPolAddrCache::clear() {
    const WriteLock lock(_lock);
    _publish(std::make_unique<CacheContent>(_gate));
}

void ZxPolAddrCache::_publish(std::unique_ptr<CacheContent> content) noexcept {
    _gate.retire(_content.exchange(content.release(), std::memory_order_seq_cst));
}

// ---- orders ----------------------------------------------------------------------------------------

size_t ZxPolAddrCache::ItemList::size() const {
    return _items.size();
}

_ZxPolAddrCacheItem ZxPolAddrCache::ItemList::operator[](size_t index) const {
    // The user order ascends.
    const CacheContent::Items& order = _content.userOrder();
    const auto place = std::lower_bound(order.begin(), order.end(), _items[index]);
    return {_content.text(_items[index]).data(), static_cast<uint32_t>(place - order.begin())};
}

// Runs `look` while nothing changes and the orders that it needs are there.
template <class Look>
auto ZxPolAddrCache::_lookAtOrder(bool isSorted, Look look) -> decltype(look()) {
    const auto isReady = [&] {
        const CacheContent& content = _published();
        return isSorted ? content.areSortedReady() : content.isUserOrderReady();
    };
    {
        const ReadLock lock(_lock);
        if (isReady()) return look();
    }
    const WriteLock lock(_lock);
    CacheContent& content = *_content.load(std::memory_order_relaxed);
    content.prepareUserOrder();
    if (isSorted) content.prepareSorted();
    return look();
}

void ZxPolAddrCache::enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    const char* order = std::getenv("order");
    const bool isSorted = order != nullptr && std::strcmp(order, "user") != 0;
    const bool isAscending = isSorted && std::strcmp(order, "decending") != 0;
    try {
        *error = _lookAtOrder(isSorted, [&] {
            const char* text = _textAt(index, isSorted, isAscending);
            if (text == nullptr) return ZXPOL_E_NO_MORE_ITEMS;
            const auto needed = static_cast<uint32_t>(std::strlen(text) + 1);
            const bool fits = *size >= needed;
            if (fits) std::memcpy(buffer, text, needed);
            *size = needed;
            return fits ? ZXPOL_S_OK : ZXPOL_E_BUFFER_TOO_SMALL;
        });
    } catch (...) {
        *error = ZXPOL_E_EXCEPTION;
    }
}

const char* ZxPolAddrCache::getUserOrder(uint32_t index) {
    return _lookAtOrder(false, [&] { return _textAt(index, false, false); });
}

const char* ZxPolAddrCache::getAlphaOrder(uint32_t index, bool ascending) {
    return _lookAtOrder(true, [&] { return _textAt(index, true, ascending); });
}

// The text at a place of an order that is ready, or null.
const char* ZxPolAddrCache::_textAt(uint32_t index, bool isSorted, bool isAscending) const {
    const CacheContent& content = _published();
    if (index >= content.size()) return nullptr;
    if (!isSorted) return content.text(content.userOrder()[index]).data();
    const CacheContent::Items& wildcards = content.sorted(ListKind::wildcard);
    const CacheContent::Items& exact = content.sorted(ListKind::exact);
    const size_t count = wildcards.size();
    if (index < count) return textOf(content, wildcards, isAscending ? index : count - index - 1, isAscending);
    if (isAscending) return textOf(content, exact, index - count, isAscending);
    // The exact list is counted from its next-to-last entry on; there is nothing at the end of it.
    const size_t fromEnd = index - count + 2;
    return fromEnd <= exact.size() ? textOf(content, exact, exact.size() - fromEnd, isAscending) : nullptr;
}

ZxPolAddrCache::ItemList ZxPolAddrCache::_itemsOf(ListType type) {
    return _lookAtOrder(true, [&] { return ItemList(_published(), _published().sorted(kindOf(type))); });
}

size_t ZxPolAddrCache::_lowerBound(const char* key, const ItemList& items) const {
    size_t first = 0;
    for (size_t length = items.size(); length > 0;) {
        const size_t half = length / 2;
        const size_t middle = first + half;
        if (kr_stricmp(FoldedKey(items[middle].address).text(), key) < 0) {
            first = middle + 1;
            length -= half + 1;
        } else {
            length = half;
        }
    }
    return first;
}

uint32_t ZxPolAddrCache::size() {
    const ReadLock lock(_lock);
    return _published().size();
}
