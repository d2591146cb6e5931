// ZxPolNormalAddrList: inserting addresses.
#include <cstring>

#include "addrlist/coming_keys.h"
#include "addrlist/normal_addr_list.h"
#include "frame/reg_debug.h"
#include "pattern/cond_wildcard_pattern.h"
#include "store/multi_value.h"
#include "store/result.h"
#include "store/store_value.h"

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
    _change(error, [&] {
        _insert(addresses, error);
        return true;
    });
}

void ZxPolNormalAddrList::_insert(const char** addresses, int* error) {
    _keepTail();
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
            _append(address, error);
            if (failed(*error)) return _forgetTail();
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

// Adds an address to the last value, or to a new one behind it, and writes that. The names are read for the first
// address that needs them.
void ZxPolNormalAddrList::_append(const char* address, int* error) {
    *error = ZXPOL_S_OK;
    if (_names == nullptr) _loadTail(error);
    const size_t size = std::strlen(address) + 1;
    const bool hasRoom = !_subLists.empty() && _subLists.back()->multiStrLen() + size <= ZxPolAddrSubList::maxImage;
    if (succeeded(*error) && !hasRoom) _beginSubList(error);
    if (failed(*error)) return;
    ZxPolAddrSubList& tail = *_subLists.back();
    tail.insert(address, error);
    tail.flush(_listKey(), error);
}

// Reads the names and loads the last value.
void ZxPolNormalAddrList::_loadTail(int* error) {
    _refreshSubListCache();
    _names = std::make_unique<ZxPolMultiValue>(_listKey(), kAddressValue);
    *error = _names->result();
    _hasNameGaps = false;
    if (failed(*error) || _names->count() == 0) return;
    char name[kNameSize];
    uint32_t size = sizeof name;
    _names->enumValueName(_names->count() - 1, name, &size, error);
    _hasNameGaps = name != kAddressValue + std::to_string(_names->count());
    if (succeeded(*error)) _loadSubList(name, error);
}

// Of the sub-lists of the last insertion only the tail is of use to the next one. Where numbers are missing, a value
// that was begun may not be the last one.
void ZxPolNormalAddrList::_keepTail() {
    if (_names == nullptr || _subLists.empty() || _hasNameGaps) return _forgetTail();
    _subLists.erase(_subLists.begin(), _subLists.end() - 1);
}

void ZxPolNormalAddrList::_forgetTail() {
    _names.reset();
    _refreshSubListCache();
}

void ZxPolNormalAddrList::_beginSubList(int* error) {
    char name[kNameSize];
    uint32_t size = sizeof name;
    _names->createValueName(name, &size, error);
    if (succeeded(*error)) _loadSubList(name, error);
}

void ZxPolNormalAddrList::_loadSubList(const char* valueName, int* error) {
    auto subList = std::make_unique<ZxPolAddrSubList>(_listKey(), valueName, error);
    if (succeeded(*error)) _subLists.push_back(std::move(subList));
}

void ZxPolNormalAddrList::_refreshSubListCache() {
    _subLists.clear();
}
