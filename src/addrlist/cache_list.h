// CacheList: the address caches of all normal lists of the process.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "addrlist/addr_cache.h"
#include "store/key_state.h"

namespace zxpol {

// The cache of one list, and which state of the list in the store it mirrors.
class ListCache {
public:
    // The cache mirrors `state` once it has been filled.
    explicit ListCache(const KeyState& state) : _identity(state.identity), _stamp(state.stamp) {}

    ZxPolAddrCache addresses;

    // These belong to who changes the list. N, when its values are known to be "address1" to "addressN".
    std::optional<uint32_t> valueCount;
    // Whether an address may be stored twice, by the hand of others or by a failed compaction.
    bool mayHaveDoubles = false;

    // Whether it is the cache of the key with this identity.
    bool isOf(const KeyState& state) const { return _identity == state.identity; }

    // Whether it mirrors the state: the stamp is the same, or this process is changing the list and the cache with it.
    // A store that does not tell its keys apart is not believed that it is the same list which is being changed.
    bool mirrors(const KeyState& state) const {
        if (!isOf(state) || isDoubtful()) return false;
        return _stamp.load(std::memory_order_acquire) == state.stamp ||
               (_identity != 0 && _changes.load(std::memory_order_acquire) != 0);
    }

    // Says that the cache may not have followed its list: whoever needs it next takes another.
    void doubt() { _isDoubtful.store(true, std::memory_order_release); }
    bool isDoubtful() const { return _isDoubtful.load(std::memory_order_acquire); }

    // A change of the list, made in this process. Changes are made one after the other; they nest in one thread.
    class Change {
    public:
        explicit Change(ListCache& cache) : _cache(cache), _lock(cache._changing) { ++_cache._changes; }
        ~Change() { --_cache._changes; }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

        // The cache has followed the list to this state.
        void reached(const KeyState& state) { _cache._stamp.store(state.stamp, std::memory_order_release); }

    private:
        ListCache& _cache;
        const std::lock_guard<std::recursive_mutex> _lock;
    };

private:
    const uint64_t _identity;
    std::atomic<uint64_t> _stamp;
    std::atomic<uint32_t> _changes{0};
    std::atomic<bool> _isDoubtful{false};
    std::recursive_mutex _changing;
};

/*
 * Lists are known by their names, told apart byte by byte. Lists of one name in several stores have a cache each; of
 * more than a few stores the ones used longest ago lose theirs. Whoever uses a cache holds a share of it, so that it
 * may be dropped here at any time. The caller locks.
 */
class CacheList {
public:
    using Shared = std::shared_ptr<ListCache>;

    // The cache of `name` that mirrors `state`, or null.
    Shared find(const std::string& name, const KeyState& state);

    // Enters the cache of `name` for the key of `state`, in place of the one that there was.
    void put(const std::string& name, const KeyState& state, const Shared& cache);

    // Forgets the caches of `name`.
    void drop(const std::string& name);

private:
    // The one used last comes first.
    std::map<std::string, std::vector<Shared>, std::less<>> _caches;
};

}  // namespace zxpol
