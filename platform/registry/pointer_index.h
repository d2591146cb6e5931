// A hash set of pointers, found by a key that each item carries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace zxreg {

// `KeyOf` maps an item to its key. Open addressing with linear probing: an item costs two words, and an item taken out
// fits in again without an allocation, which is what lets changes be taken back without failing. Owns nothing.
template <class Item, class KeyOf>
class PointerIndex {
public:
    using Key = decltype(KeyOf()(*static_cast<const Item*>(nullptr)));

    size_t size() const noexcept { return _count; }

    Item* find(const Key& key) const noexcept {
        if (_slots.empty()) return nullptr;
        for (size_t i = home(key); _slots[i] != nullptr; i = next(i)) {
            if (KeyOf()(*_slots[i]) == key) return _slots[i];
        }
        return nullptr;
    }

    // Makes room for `count` items, so that inserting up to that number cannot fail.
    void reserve(size_t count) {
        size_t wanted = 16;
        while (wanted < count * 2) {
            wanted *= 2;
        }
        if (wanted <= _slots.size()) return;
        std::vector<Item*> old(wanted, nullptr);
        old.swap(_slots);
        for (Item* item : old) {
            if (item != nullptr) place(item);
        }
    }

    // The key must not be held yet.
    void insert(Item* item) {
        reserve(_count + 1);
        place(item);
        ++_count;
    }

    // Swaps the item of the same key for this one.
    void replace(Item* item) noexcept {
        size_t i = home(KeyOf()(*item));
        while (!(KeyOf()(*_slots[i]) == KeyOf()(*item))) {
            i = next(i);
        }
        _slots[i] = item;
    }

    // Takes the item out and closes the gap, so that no probe ends early.
    void erase(const Item* item) noexcept {
        size_t gap = home(KeyOf()(*item));
        while (_slots[gap] != item) {
            gap = next(gap);
        }
        for (size_t i = next(gap); _slots[i] != nullptr; i = next(i)) {
            const size_t distance = (i - home(KeyOf()(*_slots[i]))) & mask();
            if (distance < ((i - gap) & mask())) continue;
            _slots[gap] = _slots[i];
            gap = i;
        }
        _slots[gap] = nullptr;
        --_count;
    }

    // Calls `visit(Item&)` for every item, in no particular order; `visit` must not change the index.
    template <class Visit>
    void forEach(Visit visit) const {
        for (Item* item : _slots) {
            if (item != nullptr) visit(*item);
        }
    }

private:
    size_t mask() const noexcept { return _slots.size() - 1; }
    size_t next(size_t i) const noexcept { return (i + 1) & mask(); }

    size_t home(const Key& key) const noexcept {
        // Spread, because ids come in long rows, and a row in the table is what makes taking out slow.
        const uint64_t hash = uint64_t{std::hash<Key>()(key)} * 0x9e3779b97f4a7c15u;
        return static_cast<size_t>(hash >> 32) & mask();
    }

    void place(Item* item) noexcept {
        size_t i = home(KeyOf()(*item));
        while (_slots[i] != nullptr) {
            i = next(i);
        }
        _slots[i] = item;
    }

    std::vector<Item*> _slots;
    size_t _count = 0;
};

}  // namespace zxreg
