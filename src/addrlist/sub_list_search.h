// SubListSearch: which of the loaded sub-lists may hold an address that is to be removed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "addrlist/addr_sub_list.h"
#include "addrlist/folded_text.h"

namespace zxpol {

// Knows beforehand all addresses that will be asked for, and notes where they are as the sub-lists are loaded: so each
// sub-list is looked through once, however many addresses are removed. A few addresses are not worth the notes.
class SubListSearch {
public:
    // `wanted` is closed by a null pointer.
    explicit SubListSearch(const char* const* wanted) {
        size_t count = 0;
        while (wanted[count] != nullptr)
            ++count;
        if (count <= kFew) return;
        for (size_t i = 0; i < count; ++i)
            _places[hashText(wanted[i])];
    }

    // The sub-list that is the next one has been loaded.
    void note(const ZxPolAddrSubList& loaded) {
        for (uint32_t i = 0; !_places.empty() && i < loaded.count(); ++i) {
            const auto found = _places.find(hashText(loaded.at(i)));
            if (found != _places.end()) found->second.push_back(_count);
        }
        ++_count;
    }

    // Whether `isHolder` is true of one of the sub-lists that may hold `address`, in their order.
    template <class IsHolder>
    bool anyHolder(const char* address, IsHolder isHolder) const {
        if (!_places.empty()) {
            const std::vector<size_t>& places = _places.at(hashText(address));
            return std::any_of(places.begin(), places.end(), isHolder);
        }
        for (size_t place = 0; place < _count; ++place) {
            if (isHolder(place)) return true;
        }
        return false;
    }

private:
    static constexpr size_t kFew = 8;

    std::unordered_map<uint64_t, std::vector<size_t>> _places;  // by hash; empty for a few addresses
    size_t _count = 0;
};

}  // namespace zxpol
