// ZxPolNormalAddrList: its cache, its attributes, and its answers.
#include "addrlist/normal_addr_list.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "addrlist/lock_guards.h"
#include "addrlist/value_names.h"
#include "pattern/priority.h"
#include "store/one_state.h"
#include "store/result.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

// The name under which a list's cache is known: as the store takes it, without a backslash at its end.
std::string cacheName(std::string_view name) {
    if (!name.empty() && name.back() == '\\') name.remove_suffix(1);
    return std::string(name);
}

// Inserts what a value holds, up to an address that is too long to be one.
void insertAll(const ZxPolAddrSubList& subList, ListCache& list) {
    const auto isTooLong = [](const char* address) {
        return strnlen(address, ZxPolNormalAddrList::kAddressSize) == ZxPolNormalAddrList::kAddressSize;
    };
    const std::vector<const char*>& all = subList.addresses();
    const auto end = std::find_if(all.begin(), all.end(), isTooLong);
    const size_t present = list.addresses.insertAddresses(all.data(), static_cast<size_t>(end - all.begin()));
    if (present != 0) list.mayHaveDoubles = true;
}

}  // namespace

ZxPolInsertWatch::~ZxPolInsertWatch() = default;

void ZxPolInsertWatch::onFailure(size_t /*place*/, int /*result*/) {}

// The map is destroyed after the lock.
ZxPolNormalAddrList::CacheList ZxPolNormalAddrList::gmAddrCacheMap;
KR::CRWLock ZxPolNormalAddrList::gmRWLock(nullptr);

ZxPolNormalAddrList::ZxPolNormalAddrList(_ZxPolComHandle* listKey, const char* name, int* error)
    : ZxPolNormalAddrList(StoreKey(listKey), name, error) {}

ZxPolNormalAddrList::ZxPolNormalAddrList(StoreKey listKey, const char* name, int* error)
    : ZxPolAddrList(std::move(listKey)), _name(cacheName(name != nullptr ? name : "")) {
    if (error != nullptr) _joinCache(error);
}

ZxPolNormalAddrList::~ZxPolNormalAddrList() = default;

// ---- the cache -------------------------------------------------------------------------------------

// Takes part in the cache that mirrors the list as it is in the store, and makes it when there is none. On failure the
// object keeps the cache that it had.
void ZxPolNormalAddrList::_joinCache(int* error) {
    // When another process writes while the list is read, half of that may be in the cache. Mostly it is done soon.
    constexpr int attempts = 3;
    CacheList::Shared torn;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (_tryToJoin(torn, error) || failed(*error)) return;
    }
    // Now it has to wait.
    Update update(_listKey(), error);
    if (!update || _tryToJoin(torn, error) || failed(*error)) return;
    // Nobody could be made to wait. In a store without updates what was read is for this object alone; elsewhere, as in
    // a file that may only be read, half of a list is none.
    if (canUpdate())
        *error = kStateIsChanging;
    else
        _cache = torn;
}

// False, with success, when the list has changed while it was read, into `torn`.
bool ZxPolNormalAddrList::_tryToJoin(CacheList::Shared& torn, int* error) {
    const WriteLock lock(gmRWLock);
    const KeyState state = stateOf(_listKey(), error);
    if (failed(*error)) return false;
    CacheList::Shared cache = gmAddrCacheMap.find(_name, state);
    if (cache == nullptr) {
        // While another thread changes the list, and could be waited for, there is no use in reading it.
        if (canUpdate() && stateOf(_listKey(), error).stamp != state.stamp) return false;
        if (failed(*error)) return false;
        cache = std::make_shared<ListCache>(state);
        _fill(*cache, error);
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
    if (error == nullptr || _cache == nullptr) return;
    const ListCache::Change change(*_cache);
    _fill(*_cache, error);
}

void ZxPolNormalAddrList::_fill(ListCache& cache, int* error) const {
    const ValueNames names(_listKey(), std::nullopt);
    for (uint32_t index = 0; index < names.count(); ++index) {
        const std::string name = names.at(index, error);
        if (failed(*error)) return;
        const ZxPolAddrSubList subList(_listKey(), name.c_str(), error);
        if (failed(*error)) return;
        insertAll(subList, cache);
    }
    // A list that could not be read to its end is not taken for the whole of it.
    *error = names.result();
    cache.valueCount = names.denseCount();
}

void ZxPolNormalAddrList::clearAddrCacheByName(const char* name, int* /*error*/) {
    if (name == nullptr) return;
    const std::string dropped = cacheName(name);
    const WriteLock lock(gmRWLock);
    gmAddrCacheMap.drop(dropped);
}

// Runs `body`, which changes the list in the store and its cache in step, as one update. The cache is one that shows
// the list as it is when the update begins. Where the two may have come apart, the cache is left for a fresh one.
void ZxPolNormalAddrList::_change(int* error, const std::function<void()>& body) {
    {
        Update update(_listKey(), error);
        if (!update) return;
        _joinChangedList(error);
        if (failed(*error)) return;
        // A change inside this one may leave the cache for another.
        const CacheList::Shared changing = _cache;
        try {
            {
                ListCache::Change change(*changing);
                body();
                int result = ZXPOL_S_OK;
                const KeyState state = stateOf(_listKey(), &result);
                // Without updates the state may be the work of somebody else, too; and a cache that was left does not
                // follow.
                if (succeeded(result) && canUpdate() && _cache == changing) change.reached(state);
            }
            // Others may write once the update has ended: from then on the stamp alone says what the cache mirrors.
            if (!update.end()) _doubt(*changing);
        } catch (...) {
            _doubt(*changing);
            throw;
        }
    }
    // If that fails the object goes on to answer from what it has, until its next change.
    int result = ZXPOL_S_OK;
    if (_cache->isDoubtful()) _joinCache(&result);
}

void ZxPolNormalAddrList::_doubt(ListCache& changing) {
    changing.doubt();
    _cache->doubt();
}

// Takes a fresh cache when the list has been changed by others since this object took its own.
void ZxPolNormalAddrList::_joinChangedList(int* error) {
    const KeyState state = stateOf(_listKey(), error);
    if (failed(*error)) return;
    _isExact = state.stamp != 0 && canUpdate();
    if (_cache == nullptr || !_cache->mirrors(state)) _joinCache(error);
}

// The number of values, if it is known and nobody else can have changed it.
std::optional<uint32_t> ZxPolNormalAddrList::_knownValueCount() const {
    return _isExact ? _cache->valueCount : std::nullopt;
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
    if (_cache != nullptr) return _cache->addresses.matchAddress(address, weight, weightType);
    if (weight != nullptr) *weight = ZxPolPriority::minWeight();
    return false;
}

std::string ZxPolNormalAddrList::findMatch(const char* address, ZxPolMatchWeightType weightType) const {
    if (_cache == nullptr) return {};
    const std::string exact = _cache->addresses.findMatch(address, ZxPolAddrCache::ExactList, weightType);
    return exact.empty() ? _cache->addresses.findMatch(address, ZxPolAddrCache::WildCardList, weightType) : exact;
}
