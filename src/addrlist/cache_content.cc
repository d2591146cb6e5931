#include "addrlist/cache_content.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "addrlist/alpha_order.h"

namespace zxpol {

namespace {

constexpr TextArena::Mark kHasQuotes = TextArena::markA;
constexpr TextArena::Mark kIsWildcard = TextArena::markB;

// Fewer bytes of removed texts are not worth the work of copying the others.
constexpr uint64_t kWorthCopying = uint64_t{64} << 10;

// Makes room for one more item without giving up that a vector grows by factors.
void makeRoomFor(CacheContent::Items& items) {
    if (items.size() == items.capacity()) items.reserve(items.size() + items.size() / 2 + 8);
}

// Where the patterns file a wildcard entry.
std::optional<WildcardIndex::Place> placeOf(std::string_view address, ListKind list) {
    if (list == ListKind::exact) return std::nullopt;
    return WildcardIndex::Place(address.data());
}

}  // namespace

CacheContent::CacheContent(ReaderGate& gate) : _tables{RefTable(gate), RefTable(gate)}, _patterns(_texts, gate) {}

ListKind CacheContent::listOf(uint32_t item) const {
    return _texts.hasMark(item, kIsWildcard) ? ListKind::wildcard : ListKind::exact;
}

bool CacheContent::hasKey(uint32_t item, const FoldedKey& key) const {
    const std::string_view own = _texts.text(item);
    if (!_texts.hasMark(item, kHasQuotes)) {
        return own.size() == key.length() && equalsFolded(own.data(), key.text(), own.size());
    }
    const FoldedKey ownKey(own);
    return ownKey.length() == key.length() && std::memcmp(ownKey.text(), key.text(), key.length()) == 0;
}

void CacheContent::add(std::string_view address, const FoldedKey& key, ListKind list) {
    // All that can fail comes first; a text that nothing refers to does no harm.
    const auto place = placeOf(address, list);
    makeRoom(list);
    makeRoomFor(_userOrder);
    const int marks = (key.hadQuotes() ? kHasQuotes : 0) | (list == ListKind::wildcard ? kIsWildcard : 0);
    const uint32_t item = _texts.add(address, static_cast<TextArena::Mark>(marks));
    _userOrder.push_back(item);
    forgetSorted();
    if (place) _patterns.insert(item, *place);
    tableOf(list).insert(key.hash(), item);
}

void CacheContent::remove(uint32_t item, const FoldedKey& key, ListKind list) {
    const std::string_view address = text(item);
    const auto place = placeOf(address, list);
    _removed.push_back(item);
    _removedBytes += TextArena::sizeOf(address);
    forgetSorted();
    tableOf(list).remove(key.hash(), item);
    if (place) _patterns.remove(item, *place);
}

// Makes room for one more item in the tables.
void CacheContent::makeRoom(ListKind list) {
    const auto forEachItem = [&](auto visit) {
        prepareUserOrder();
        for (const uint32_t item : _userOrder) {
            if (listOf(item) == list) visit(item);
        }
    };
    tableOf(list).makeRoom(
        [&](auto put) { forEachItem([&](uint32_t item) { put(FoldedKey(text(item)).hash(), item); }); });
    if (list == ListKind::wildcard) _patterns.makeRoom(forEachItem);
}

bool CacheContent::isSparse() const {
    return _removedBytes > kWorthCopying && _removedBytes > _texts.used() / 2;
}

void CacheContent::addAllOf(CacheContent& other) {
    other.prepareUserOrder();
    for (const uint32_t item : other._userOrder) {
        const std::string_view address = other.text(item);
        add(address, FoldedKey(address), other.listOf(item));
    }
}

void CacheContent::prepareUserOrder() {
    if (_removed.empty()) return;
    std::sort(_removed.begin(), _removed.end());
    auto removed = _removed.begin();
    const auto isRemoved = [&](uint32_t item) {
        if (removed == _removed.end() || *removed != item) return false;
        ++removed;
        return true;
    };
    _userOrder.erase(std::remove_if(_userOrder.begin(), _userOrder.end(), isRemoved), _userOrder.end());
    _removed.clear();
}

void CacheContent::prepareSorted() {
    if (_isSorted) return;
    forgetSorted();
    prepareUserOrder();
    for (const uint32_t item : _userOrder)
        _sorted[static_cast<size_t>(listOf(item))].push_back(item);
    for (Items& items : _sorted)
        sortByKey(_texts, items);
    _isSorted = true;
}

void CacheContent::forgetSorted() {
    for (Items& items : _sorted)
        Items().swap(items);
    _isSorted = false;
}

}  // namespace zxpol
