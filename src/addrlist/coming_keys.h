// ComingKeys: the keys of a row of addresses, made a little ahead.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

#include "addrlist/addr_cache.h"
#include "addrlist/folded_text.h"

namespace zxpol {

// Hands out the key of each address of a row, in order, and has the processor fetch meanwhile what the cache will look
// at for the next ones: in a long list they are far from each other, and each would be waited for.
class ComingKeys {
public:
    explicit ComingKeys(const ZxPolAddrCache& cache) : _cache(cache) {}

    // The key of the address at `index`, which ascends from 0 by one a call. `addressAt` gives the address at an index,
    // or null behind the last one. The key stays until the next call.
    template <class AddressAt>
    const FoldedKey& keyOf(size_t index, AddressAt addressAt) {
        for (; !_isAtEnd && _made <= index + ahead; ++_made) {
            const char* address = addressAt(_made);
            _isAtEnd = address == nullptr;
            if (_isAtEnd) break;
            // Longer texts are no addresses, and what is looked up for them does not count.
            const FoldedKey& key =
                _keys[_made % _keys.size()].emplace(std::string_view(address, strnlen(address, most)));
            _cache.prefetch(key, ZxPolAddrCache::listOf(address));
        }
        return *_keys[index % _keys.size()];
    }

private:
    static constexpr size_t ahead = 7;
    static constexpr size_t most = 512;

    const ZxPolAddrCache& _cache;
    std::array<std::optional<FoldedKey>, ahead + 1> _keys;
    size_t _made = 0;
    bool _isAtEnd = false;
};

}  // namespace zxpol
