// ZxPolNormalAddrList: removing addresses, and closing the gaps that they leave.
#include <algorithm>
#include <cstring>

#include "addrlist/normal_addr_list.h"
#include "addrlist/sub_list_search.h"
#include "frame/reg_debug.h"
#include "store/multi_value.h"
#include "store/result.h"
#include "store/store_value.h"

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
    _change(error, [&] { return _remove(addresses, error); });
}

// False when the cache has not followed.
bool ZxPolNormalAddrList::_remove(const char** addresses, int* error) {
    _forgetTail();
    ZxPolMultiValue names(_listKey(), kAddressValue);
    SubListSearch search(addresses);
    uint32_t lowest = kNoSubList;
    bool isMissing = false;
    for (; *addresses != nullptr; ++addresses) {
        int position = 0;
        const uint32_t holder = _findHolder(*addresses, position, search, names, error);
        if (failed(*error)) return true;
        if (holder == kNoSubList) {
            ZXPOL_DEBUG(3, "Address '%s' doesn't exist", *addresses);
            isMissing = true;
            continue;
        }
        const bool isInStep = _removeFrom(holder, position, *addresses, error);
        if (failed(*error)) return isInStep;
        if (_subLists[holder]->multiStrLen() < kSparse) lowest = std::min(lowest, holder);
    }
    if (lowest != kNoSubList) _closeGaps(lowest, names);
    *error = isMissing ? ZXPOL_E_NOT_FOUND : ZXPOL_S_OK;
    return true;
}

// The first sub-list that holds `address`, and where; kNoSubList when there is none. Loads what it needs.
uint32_t ZxPolNormalAddrList::_findHolder(const char* address, int& position, SubListSearch& search,
                                          ZxPolMultiValue& names, int* error) {
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
bool ZxPolNormalAddrList::_loadNext(ZxPolMultiValue& names, int* error) {
    const auto index = static_cast<uint32_t>(_subLists.size());
    if (index >= names.count()) {
        *error = names.result();
        return false;
    }
    char name[kNameSize];
    uint32_t size = sizeof name;
    names.enumValueName(index, name, &size, error);
    if (succeeded(*error)) _loadSubList(name, error);
    return succeeded(*error);
}

// False when the address went from the store, and the cache had none: it was stored in two spellings.
bool ZxPolNormalAddrList::_removeFrom(uint32_t subList, int position, const char* address, int* error) {
    ZxPolAddrSubList& holder = *_subLists[subList];
    holder.remove(address, error, position);
    holder.flush(_listKey(), error);
    if (failed(*error)) return true;
    _cache->addresses.removeAddress(address, ZxPolAddrCache::listOf(address), error);
    return succeeded(*error);
}

// ---- closing the gaps ----------------------------------------------------------------------------------

// Loads what is not loaded yet and moves addresses forward. Without success the gaps stay, which does no harm.
void ZxPolNormalAddrList::_closeGaps(uint32_t lowest, ZxPolMultiValue& names) {
    int result = ZXPOL_S_OK;
    while (_loadNext(names, &result)) {
    }
    if (succeeded(result)) _shiftAddresses(lowest, &result);
}

void ZxPolNormalAddrList::_shiftAddresses(uint32_t from, int* error) {
    if (error == nullptr) return;
    *error = ZXPOL_S_OK;
    const size_t count = _subLists.size();
    for (uint32_t to = from; to + 1 < count && !isEnd(*error); ++to) {
        _moveForward(to, error);
        if (failed(*error) && !isEnd(*error)) return;
    }
    *error = ZXPOL_S_OK;
    // Emptied values have gathered at the end.
    ZxPolMultiValue names(_listKey(), kAddressValue);
    for (size_t index = count; index-- > 0;) {
        int result = ZXPOL_S_OK;
        if (_subLists[index]->multiStrLen() < 2) names.deleteValueName(static_cast<uint32_t>(index), &result);
    }
}

// Fills the sub-list `to` with addresses from the ones behind it, in their order. ZXPOL_E_NO_MORE_ITEMS when there are
// no more. The sub-list is always written before the ones that have lost addresses to it: for a moment an address may
// be in two values, never in none.
void ZxPolNormalAddrList::_moveForward(uint32_t to, int* error) {
    ZxPolAddrSubList& target = *_subLists[to];
    uint32_t source = to + 1;
    char address[kAddressSize];
    int found = ZXPOL_S_OK;
    _findFirst(source, address, &found);
    if (failed(found)) {
        *error = found;
        return;
    }
    while (succeeded(found) && target.multiStrLen() + std::strlen(address) < ZxPolAddrSubList::maxImage) {
        target.insert(address, error);
        _subLists[source]->remove(address, error);
        const uint32_t used = source;
        _findFirst(source, address, &found);
        if (used != source) _flush(to, used, source, error);
        if (failed(*error)) return;
    }
    _flush(to, source, source + 1, error);
    if (succeeded(*error)) *error = found;
}

// The first address at or behind the beginning of the sub-list `source`, which becomes the one that it is in.
void ZxPolNormalAddrList::_findFirst(uint32_t& source, char* address, int* error) const {
    for (;; ++source) {
        uint32_t size = kAddressSize;
        _subLists[source]->enumerate(0, address, &size, error);
        if (!isEnd(*error) || source + 1 == _subLists.size()) return;
    }
}

// Writes the sub-list `to`, then those from `begin` up to `end`.
void ZxPolNormalAddrList::_flush(uint32_t to, uint32_t begin, uint32_t end, int* error) {
    _subLists[to]->flush(_listKey(), error);
    for (uint32_t index = begin; index < end && succeeded(*error); ++index)
        _subLists[index]->flush(_listKey(), error);
}
