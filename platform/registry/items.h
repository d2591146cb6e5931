// A collection of named items in the order of their creation: the subkeys or the values of one key.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "pointer_index.h"

namespace zxreg {

// `Ptr` points to an item with `id` and `name()`; ids ascend with creation, so the items stand in order of id and a
// position is found by binary search. Few items are searched one by one; many get an index by name.
template <class Ptr>
class Items {
public:
    using Item = typename std::pointer_traits<Ptr>::element_type;

    bool empty() const noexcept { return _items.empty(); }
    size_t size() const noexcept { return _items.size(); }
    Item& at(size_t index) const noexcept { return *_items[index]; }

    // Has the processor fetch the items behind `index`: who enumerates will ask for them, and each lies elsewhere.
    void prefetchBehind(size_t index) const noexcept {
        constexpr size_t ahead = 8;
        if (index + ahead < _items.size()) __builtin_prefetch(&*_items[index + ahead]);
    }

    Item* find(std::string_view name) const noexcept {
        if (_index) return _index->find(name);
        for (const Ptr& item : _items) {
            if (item->name() == name) return &*item;
        }
        return nullptr;
    }

    Item* findId(uint64_t id) const noexcept {
        const size_t index = position(id);
        return index < _items.size() && _items[index]->id == id ? &*_items[index] : nullptr;
    }

    // Neither the id nor the name may be held yet. When it throws, nothing has changed; an item that was held before
    // goes in again without throwing.
    void insert(Ptr item) {
        if (_items.size() == _items.capacity()) _items.reserve(_items.size() * 2 + 1);
        indexBesides(*item);
        const size_t index = position(item->id);
        _items.insert(_items.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    }

    // Swaps the item of the same id and name for this one and returns the old.
    Ptr replace(Ptr item) noexcept {
        if (_index) _index->replace(&*item);
        std::swap(_items[position(item->id)], item);
        return item;
    }

    // Takes the item of this id out; it must be held.
    Ptr remove(uint64_t id) noexcept {
        const auto place = _items.begin() + static_cast<std::ptrdiff_t>(position(id));
        Ptr item = std::move(*place);
        if (_index) _index->erase(&*item);
        _items.erase(place);
        return item;
    }

private:
    struct NameOf {
        std::string_view operator()(const Item& item) const noexcept { return item.name(); }
    };
    static constexpr size_t searchedOneByOne = 16;

    size_t position(uint64_t id) const noexcept {
        // Most changes are those of the last item.
        if (_items.empty() || _items.back()->id < id) return _items.size();
        if (_items.back()->id == id) return _items.size() - 1;
        const auto place = std::lower_bound(_items.begin(), _items.end(), id,
                                            [](const Ptr& item, uint64_t wanted) { return item->id < wanted; });
        return static_cast<size_t>(place - _items.begin());
    }

    // Enters a new item into the index, which is made when the items become many.
    void indexBesides(Item& item) {
        if (!_index && _items.size() >= searchedOneByOne) {
            PointerIndex<Item, NameOf> index;
            index.reserve(_items.size() + 1);
            for (const Ptr& held : _items) {
                index.insert(&*held);
            }
            _index = std::make_unique<PointerIndex<Item, NameOf>>(std::move(index));
        }
        if (_index) _index->insert(&item);
    }

    std::vector<Ptr> _items;
    std::unique_ptr<PointerIndex<Item, NameOf>> _index;
};

}  // namespace zxreg
