// ZxPolNormalAddrList: its cache, its attributes, and its answers.
#include "addrlist/normal_addr_list.h"

#include <cstring>
#include <utility>

#include "addrlist/coming_keys.h"
#include "addrlist/lock_guards.h"
#include "pattern/priority.h"
#include "store/multi_value.h"
#include "store/result.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

// Up to an address that is too long to be one.
void insertAll(const ZxPolAddrSubList& subList, ZxPolAddrCache& cache) {
    ComingKeys keys(cache);
    const auto addressAt = [&](size_t index) {
        return index < subList.count() ? subList.at(static_cast<uint32_t>(index)) : nullptr;
    };
    for (size_t index = 0; const char* address = addressAt(index); ++index) {
        if (strnlen(address, ZxPolNormalAddrList::kAddressSize) == ZxPolNormalAddrList::kAddressSize) return;
        cache.insertAddress(address, keys.keyOf(index, addressAt), ZxPolAddrCache::listOf(address));
    }
}

}  // namespace

ZxPolInsertWatch::~ZxPolInsertWatch() = default;

void ZxPolInsertWatch::onFailure(uint64_t /*place*/, int /*result*/) {}

// The map is destroyed after the lock.
ZxPolNormalAddrList::CacheList ZxPolNormalAddrList::gmAddrCacheMap;
KR::CRWLock ZxPolNormalAddrList::gmRWLock(nullptr);

ZxPolNormalAddrList::ZxPolNormalAddrList(_ZxPolComHandle* listKey, const char* name, int* error)
    : ZxPolNormalAddrList(StoreKey(listKey), name, error) {}

ZxPolNormalAddrList::ZxPolNormalAddrList(StoreKey listKey, const char* name, int* error)
    : ZxPolAddrList(std::move(listKey)), _name(name != nullptr ? name : "") {
    if (error != nullptr) _joinCache(error);
}

ZxPolNormalAddrList::~ZxPolNormalAddrList() = default;

// ---- the cache -------------------------------------------------------------------------------------

// Takes part in the cache that mirrors the list as it is in the store, and makes it when there is none. On failure the
// object keeps the cache that it had.
void ZxPolNormalAddrList::_joinCache(int* error) {
    CacheList::Shared torn;
    if (_tryToJoin(torn, error) || failed(*error)) return;
    // Another process wrote while the list was read, and half of that may be in the cache: now it has to wait.
    Update update(_listKey(), error);
    if (!update || _tryToJoin(torn, error) || failed(*error)) return;
    // In a store without updates nobody can be made to wait. What was read is for this object alone.
    _cache = torn;
}

// False, with success, when the list has changed while it was read, into `torn`.
bool ZxPolNormalAddrList::_tryToJoin(CacheList::Shared& torn, int* error) {
    const WriteLock lock(gmRWLock);
    const KeyState state = stateOf(_listKey(), error);
    if (failed(*error)) return false;
    CacheList::Shared cache = gmAddrCacheMap.find(_name, state);
    if (cache == nullptr) {
        cache = std::make_shared<ListCache>(state);
        _fill(cache->addresses, error);
        const KeyState now = succeeded(*error) ? stateOf(_listKey(), error) : state;
        if (failed(*error)) return false;
        if (!cache->mirrors(now)) {
            torn = cache;
            return false;
        }
        gmAddrCacheMap.put(_name, state, cache);
    }
    _cache = cache;
    return true;
}

void ZxPolNormalAddrList::_cacheAllAddresses(int* error) {
    if (error != nullptr && _cache != nullptr) _fill(_cache->addresses, error);
}

void ZxPolNormalAddrList::_fill(ZxPolAddrCache& cache, int* error) const {
    ZxPolMultiValue names(_listKey(), kAddressValue);
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof name;
        names.enumValueName(index, name, &size, error);
        if (failed(*error)) break;
        const ZxPolAddrSubList subList(_listKey(), name, error);
        if (failed(*error)) return;
        insertAll(subList, cache);
    }
    // A list that could not be read to its end is not taken for the whole of it.
    if (isEnd(*error)) *error = names.result();
}

void ZxPolNormalAddrList::clearAddrCacheByName(const char* name, int* /*error*/) {
    if (name == nullptr) return;
    const WriteLock lock(gmRWLock);
    gmAddrCacheMap.drop(name);
}

// Runs `body`, which changes the list in the store and its cache, as one update, and tells whether the two are in step.
// The cache is one that shows the list as it is when the update begins.
void ZxPolNormalAddrList::_change(int* error, const std::function<bool()>& body) {
    bool isKept = true;
    {
        Update update(_listKey(), error);
        if (!update) return;
        _joinChangedList(error);
        if (failed(*error)) return;
        {
            // A change inside this one may leave the cache for another.
            const CacheList::Shared changing = _cache;
            ListCache::Change change(*changing);
            _knownStamp = 0;
            const bool isInStep = body();
            int result = ZXPOL_S_OK;
            const KeyState state = stateOf(_listKey(), &result);
            // Without updates the state may be the work of somebody else, too.
            const bool isKnown = isInStep && succeeded(result) && canUpdate();
            if (isKnown) change.reached(state);
            _knownStamp = isKnown ? state.stamp : 0;
        }
        isKept = update.end();
    }
    if (!isKept) _leaveLostCache();
}

// Takes a fresh cache when the list has been changed by others since this object took its own.
void ZxPolNormalAddrList::_joinChangedList(int* error) {
    const KeyState state = stateOf(_listKey(), error);
    if (failed(*error)) return;
    if (state.stamp == 0 || state.stamp != _knownStamp) _forgetTail();
    if (_cache == nullptr || !_cache->mirrors(state)) _joinCache(error);
}

// Drops the cache, which is ahead of a store that has not kept the change.
void ZxPolNormalAddrList::_leaveLostCache() {
    {
        const WriteLock lock(gmRWLock);
        gmAddrCacheMap.drop(_name, _cache);
    }
    int result = ZXPOL_S_OK;
    _joinCache(&result);
}

// ---- attributes --------------------------------------------------------------------------------------

bool ZxPolNormalAddrList::isValidAttrib(const _ZxPolAddrListAttr* attr) {
    return attr != nullptr && attr->type == ZXPOL_ADDRLIST_NORMAL && isTerminated(attr->displayName) &&
           isTerminated(attr->comment);
}

void ZxPolNormalAddrList::getAttrib(_ZxPolAddrListAttr* attr, int* error) {
    if (error == nullptr) return;
    if (attr == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    _getCommonAttrib(commonOf(attr), error);
    attr->type = ZXPOL_ADDRLIST_NORMAL;
}

void ZxPolNormalAddrList::setAttrib(const _ZxPolAddrListAttr* attr, int* error) {
    if (error == nullptr) return;
    if (!isValidAttrib(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    _change(error, [&] {
        writeNumber(_listKey(), "type", attr->type, error);
        if (succeeded(*error)) _setCommonAttrib(commonOf(attr), error);
        return true;
    });
}

// ---- answers -----------------------------------------------------------------------------------------

void ZxPolNormalAddrList::enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr || _cache == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    *error = ZXPOL_S_OK;
    _cache->addresses.enumAddress(index, buffer, size, error);
}

bool ZxPolNormalAddrList::matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType weightType,
                                       int* /*error*/) {
    if (weight != nullptr) *weight = ZxPolPriority::minWeight();
    if (_cache == nullptr) return false;
    const ZxPolAddrCache& addresses = _cache->addresses;
    return addresses.matchAddress(address, ZxPolAddrCache::ExactList, weight, weightType) ||
           addresses.matchAddress(address, ZxPolAddrCache::WildCardList, weight, weightType);
}

std::string ZxPolNormalAddrList::findMatch(const char* address, ZxPolMatchWeightType weightType) const {
    if (_cache == nullptr) return {};
    const std::string exact = _cache->addresses.findMatch(address, ZxPolAddrCache::ExactList, weightType);
    return exact.empty() ? _cache->addresses.findMatch(address, ZxPolAddrCache::WildCardList, weightType) : exact;
}
