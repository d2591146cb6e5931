// ZxPolNormalAddrList: removing addresses, and closing the gaps that they leave.
#include <algorithm>
#include <cstring>
#include <new>

#include "addrlist/normal_addr_list.h"
#include "addrlist/sub_list_search.h"
#include "addrlist/value_names.h"
#include "frame/reg_debug.h"
#include "store/multi_value.h"
#include "store/result.h"

using namespace zxpol;

namespace {

// An image that gets shorter than two thirds of the bound is worth filling up.
constexpr uint32_t kSparse = 1364;

constexpr uint32_t kNoSubList = UINT32_MAX;

}  // namespace

void ZxPolNormalAddrList::removeAddresses(const char** addresses, int* error) {
    if (error == nullptr) return;
    if (addresses == nullptr || *addresses == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    _change(error, [&] { _remove(addresses, error); });
}

void ZxPolNormalAddrList::_remove(const char** addresses, int* error) {
    _refreshSubListCache();
    const ValueNames names(_listKey(), _knownValueCount());
    SubListSearch search(addresses);
    uint32_t lowest = kNoSubList;
    bool isMissing = false;
    for (; *addresses != nullptr; ++addresses) {
        int position = 0;
        const uint32_t holder = _findHolder(*addresses, position, search, names, error);
        if (failed(*error)) return;
        if (holder == kNoSubList) {
            ZXPOL_DEBUG(3, "Address '%s' doesn't exist", *addresses);
            isMissing = true;
            continue;
        }
        _removeFrom(holder, position, *addresses, error);
        if (failed(*error)) return;
        if (_subLists[holder]->multiStrLen() < kSparse) lowest = std::min(lowest, holder);
    }
    if (lowest != kNoSubList) _closeGaps(lowest, names);
    *error = isMissing ? ZXPOL_E_NOT_FOUND : ZXPOL_S_OK;
}

// The first sub-list that holds `address`, and where; kNoSubList when there is none. Loads what it needs.
uint32_t ZxPolNormalAddrList::_findHolder(const char* address, int& position, SubListSearch& search,
                                          const ValueNames& names, int* error) {
    *error = ZXPOL_S_OK;
    size_t holder = kNoSubList;
    const auto isHolder = [&](size_t place) {
        if (!_subLists[place]->match(address, position)) return false;
        holder = place;
        return true;
    };
    if (search.anyHolder(address, isHolder)) return static_cast<uint32_t>(holder);
    while (_loadNext(names, error)) {
        search.note(*_subLists.back());
        if (isHolder(_subLists.size() - 1)) return static_cast<uint32_t>(holder);
    }
    return kNoSubList;
}

// Loads the sub-list behind the ones that are loaded. False, with success, when there is none.
bool ZxPolNormalAddrList::_loadNext(const ValueNames& names, int* error) {
    const auto index = static_cast<uint32_t>(_subLists.size());
    if (index >= names.count()) {
        *error = names.result();
        return false;
    }
    _loadSubList(names.at(index, error), error);
    return succeeded(*error);
}

void ZxPolNormalAddrList::_removeFrom(uint32_t subList, int position, const char* address, int* error) {
    ZxPolAddrSubList& holder = *_subLists[subList];
    holder.remove(address, error, position);
    holder.flush(_listKey(), error);
    if (failed(*error)) return;
    _cache->addresses.removeAddress(address, ZxPolAddrCache::listOf(address), error);
    // Another value may hold it still.
    if (_cache->mayHaveDoubles) _cache->doubt();
}

// ---- closing the gaps ----------------------------------------------------------------------------------

// Loads what is not loaded yet and moves addresses forward. Whatever comes of it, the removal has been done.
void ZxPolNormalAddrList::_closeGaps(uint32_t lowest, const ValueNames& names) {
    int result = ZXPOL_S_OK;
    try {
        while (_loadNext(names, &result)) {
        }
        if (succeeded(result)) _shiftAddresses(lowest, &result);
    } catch (const std::bad_alloc&) {
        result = ZXPOL_E_OUT_OF_MEMORY;
    }
    if (failed(result)) _cache->mayHaveDoubles = true;
}

void ZxPolNormalAddrList::_shiftAddresses(uint32_t from, int* error) {
    if (error == nullptr) return;
    *error = ZXPOL_S_OK;
    uint32_t to = from;
    while (to + 1 < _subLists.size() && _moveForward(to, error))
        ++to;
    if (succeeded(*error)) _deleteEmptied();
}

// Deletes the values that have nothing left: they have gathered at the end. An empty value does no harm, but a gap in
// the numbers would: without success the ones before it stay.
void ZxPolNormalAddrList::_deleteEmptied() {
    std::optional<ZxPolMultiValue> names;
    int result = ZXPOL_S_OK;
    for (size_t index = _subLists.size(); index-- > 0 && succeeded(result);) {
        if (_subLists[index]->multiStrLen() >= 2) continue;
        if (!names) names.emplace(_listKey(), ValueNames::stem);
        _cache->valueCount.reset();
        names->deleteValueName(static_cast<uint32_t>(index), &result);
    }
}

// Fills the sub-list `to` with addresses from the ones behind it, in their order. False when there are no more, or it
// failed. The sub-list is always written before the ones that have lost addresses to it: for a moment an address may be
// in two values, never in none.
bool ZxPolNormalAddrList::_moveForward(uint32_t to, int* error) {
    ZxPolAddrSubList& target = *_subLists[to];
    uint32_t source = to + 1;
    char address[kAddressSize];
    int found = ZXPOL_S_OK;
    bool isFound = _findFirst(source, address, &found);
    if (!isFound) {
        *error = found;
        return false;
    }
    while (isFound && target.multiStrLen() + std::strlen(address) < ZxPolAddrSubList::maxImage) {
        target.insert(address, error);
        _subLists[source]->remove(address, error);
        const uint32_t used = source;
        isFound = _findFirst(source, address, &found);
        if (used != source) _flush(to, used, source, error);
        if (failed(*error)) return false;
    }
    _flush(to, source, source + 1, error);
    if (succeeded(*error)) *error = found;
    return isFound && succeeded(*error);
}

// The first address at or behind the beginning of the sub-list `source`, which becomes the one that it is in. False
// when there is none, or it is too long to be one, which *error tells.
bool ZxPolNormalAddrList::_findFirst(uint32_t& source, char* address, int* error) const {
    while (_subLists[source]->count() == 0) {
        if (source + 1 == _subLists.size()) return false;
        ++source;
    }
    uint32_t size = kAddressSize;
    _subLists[source]->enumerate(0, address, &size, error);
    return succeeded(*error);
}

// Writes the sub-list `to`, then those from `begin` up to `end`.
void ZxPolNormalAddrList::_flush(uint32_t to, uint32_t begin, uint32_t end, int* error) {
    _subLists[to]->flush(_listKey(), error);
    for (uint32_t index = begin; index < end && succeeded(*error); ++index)
        _subLists[index]->flush(_listKey(), error);
}
