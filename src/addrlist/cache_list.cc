#include "addrlist/cache_list.h"

#include <algorithm>

namespace zxpol {

namespace {

// The number of stores whose lists of one name have caches at a time.
constexpr size_t kStores = 4;

}  // namespace

CacheList::Shared CacheList::find(const std::string& name, const KeyState& state) {
    const auto entry = _caches.find(name);
    if (entry == _caches.end()) return nullptr;
    std::vector<Shared>& caches = entry->second;
    const auto found =
        std::find_if(caches.begin(), caches.end(), [&](const Shared& cache) { return cache->mirrors(state); });
    if (found == caches.end()) return nullptr;
    std::rotate(caches.begin(), found, found + 1);
    return caches.front();
}

void CacheList::put(const std::string& name, const KeyState& state, const Shared& cache) {
    std::vector<Shared>& caches = _caches[name];
    caches.reserve(kStores + 1);
    const auto isReplaced = [&](const Shared& other) { return other->isOf(state); };
    caches.erase(std::remove_if(caches.begin(), caches.end(), isReplaced), caches.end());
    caches.insert(caches.begin(), cache);
    if (caches.size() > kStores) caches.pop_back();
}

void CacheList::drop(const std::string& name) {
    const auto entry = _caches.find(name);
    if (entry != _caches.end()) _caches.erase(entry);
}

}  // namespace zxpol
