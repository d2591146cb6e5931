// ZxPolNormalAddrList: inserting addresses.
#include <cstring>

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
    constexpr size_t ahead = 8;
    _keepTail();
    bool hasInvalid = false;
    size_t fetched = 0;
    for (size_t index = 0; addresses[index] != nullptr; ++index) {
        for (; fetched < index + ahead && addresses[fetched] != nullptr; ++fetched)
            _cache->addresses.prefetch(addresses[fetched], ZxPolAddrCache::listOf(addresses[fetched]));
        const char* address = addresses[index];
        if (!_isAddressValid(address)) {
            ZXPOL_DEBUG(3, "Address '%s' is not valid. Skip!", address);
            _tell(index, address, Fate::invalid);
            hasInvalid = true;
        } else if (_cache->addresses.findAddress(address, ZxPolAddrCache::listOf(address))) {
            ZXPOL_DEBUG(3, "Address '%s' already exist", address);
            _tell(index, address, Fate::present);
        } else {
            _insertValid(address, error);
            if (failed(*error)) return _forgetTail();
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

// Adds an address that the list does not hold to the last value, or to a new one behind it. The names are read for the
// first address that needs them.
void ZxPolNormalAddrList::_insertValid(const char* address, int* error) {
    *error = ZXPOL_S_OK;
    if (_names == nullptr) _loadTail(error);
    const size_t size = std::strlen(address) + 1;
    const bool hasRoom = !_subLists.empty() && _subLists.back()->multiStrLen() + size <= ZxPolAddrSubList::maxImage;
    if (succeeded(*error) && !hasRoom) _beginSubList(error);
    if (failed(*error)) return;
    ZxPolAddrSubList& tail = *_subLists.back();
    tail.insert(address, error);
    tail.flush(_listKey(), error);
    if (succeeded(*error)) _cache->addresses.insertAddress(address, ZxPolAddrCache::listOf(address), error);
}

// Reads the names and loads the last value.
void ZxPolNormalAddrList::_loadTail(int* error) {
    _refreshSubListCache();
    _names = std::make_unique<ZxPolMultiValue>(_listKey(), kAddressValue);
    *error = _names->result();
    if (failed(*error) || _names->count() == 0) return;
    char name[kNameSize];
    uint32_t size = sizeof name;
    _names->enumValueName(_names->count() - 1, name, &size, error);
    if (succeeded(*error)) _loadSubList(name, error);
}

// Of the sub-lists of the last insertion only the tail is of use to the next one.
void ZxPolNormalAddrList::_keepTail() {
    if (_names == nullptr || _subLists.empty()) return _forgetTail();
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
