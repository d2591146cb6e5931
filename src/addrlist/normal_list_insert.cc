// ZxPolNormalAddrList: inserting addresses.
#include <cstring>

#include "addrlist/coming_keys.h"
#include "addrlist/normal_addr_list.h"
#include "addrlist/value_names.h"
#include "frame/reg_debug.h"
#include "pattern/cond_wildcard_pattern.h"
#include "store/result.h"

using namespace zxpol;
using Fate = ZxPolInsertWatch::Fate;

bool ZxPolNormalAddrList::_isAddressValid(const char* address) {
    // A longer one could be stored, and would never be read again.
    return address != nullptr && strnlen(address, kAddressSize) < kAddressSize &&
           ZxPolCondWildcardPattern::isPatternValid(address);
}

void ZxPolNormalAddrList::insertAddresses(const char** addresses, int* error) {
    if (error == nullptr) return;
    if (addresses == nullptr || *addresses == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    _change(error, [&] { _insert(addresses, error); });
}

void ZxPolNormalAddrList::_insert(const char** addresses, int* error) {
    _refreshSubListCache();
    std::optional<ValueNames> names;
    ComingKeys keys(_cache->addresses);
    const auto addressAt = [addresses](size_t index) { return addresses[index]; };
    bool hasInvalid = false;
    for (size_t index = 0; const char* address = addresses[index]; ++index) {
        const FoldedKey& key = keys.keyOf(index, addressAt);
        const ZxPolAddrCache::ListType type = ZxPolAddrCache::listOf(address);
        if (!_isAddressValid(address)) {
            ZXPOL_DEBUG(3, "Address '%s' is not valid. Skip!", address);
            _tell(index, address, Fate::invalid);
            hasInvalid = true;
        } else if (_cache->addresses.findAddress(key, type)) {
            ZXPOL_DEBUG(3, "Address '%s' already exist", address);
            _tell(index, address, Fate::present);
        } else {
            _append(address, names, error);
            if (failed(*error)) return _tellFailure(index, *error);
            _cache->addresses.insertAddress(address, key, type);
            _tell(index, address, Fate::stored);
        }
    }
    *error = hasInvalid ? ZXPOL_E_INVALID_FORMAT : ZXPOL_S_OK;
}

void ZxPolNormalAddrList::_tell(size_t index, const char* address, Fate fate) const {
    if (_watch != nullptr) _watch->onAddress(_lines != nullptr ? _lines[index] : index, address, fate);
}

void ZxPolNormalAddrList::_tellFailure(size_t index, int result) const {
    if (_watch != nullptr) _watch->onFailure(_lines != nullptr ? _lines[index] : index, result);
}

// Adds an address to the last value, or to a new one behind it, and writes that. The first address that is added needs
// the names.
void ZxPolNormalAddrList::_append(const char* address, std::optional<ValueNames>& names, int* error) {
    *error = ZXPOL_S_OK;
    if (!names) {
        names.emplace(_listKey(), _knownValueCount());
        _loadTail(*names, error);
    }
    const size_t size = std::strlen(address) + 1;
    const bool hasRoom = !_subLists.empty() && _subLists.back()->multiStrLen() + size <= ZxPolAddrSubList::maxImage;
    if (succeeded(*error) && !hasRoom) _loadSubList(names->next(error), error);
    if (failed(*error)) return;
    ZxPolAddrSubList& tail = *_subLists.back();
    tail.insert(address, error);
    tail.flush(_listKey(), error);
    if (succeeded(*error)) _cache->valueCount = names->denseCount();
}

void ZxPolNormalAddrList::_loadTail(const ValueNames& names, int* error) {
    *error = names.result();
    if (succeeded(*error) && names.count() != 0) _loadSubList(names.at(names.count() - 1, error), error);
}

// Loads one more value, unless its name could not be had.
void ZxPolNormalAddrList::_loadSubList(const std::string& valueName, int* error) {
    if (failed(*error)) return;
    auto subList = std::make_unique<ZxPolAddrSubList>(_listKey(), valueName.c_str(), error);
    if (succeeded(*error)) _subLists.push_back(std::move(subList));
}

void ZxPolNormalAddrList::_refreshSubListCache() {
    _subLists.clear();
}
