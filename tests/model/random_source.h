// Choices that depend on a seed only, the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace model {

class RandomSource {
public:
    explicit RandomSource(uint64_t seed) : _state(seed) {}

    size_t below(size_t limit) { return static_cast<size_t>(next() % limit); }
    size_t between(size_t low, size_t high) { return low + below(high - low + 1); }
    bool inPercent(size_t percent) { return below(100) < percent; }

    template <class Sequence>
    auto pick(const Sequence& items) -> decltype(items[0]) {
        return items[below(items.size())];
    }

private:
    // A counter, well mixed.
    uint64_t next() {
        uint64_t mixed = _state += 0x9e3779b97f4a7c15u;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
        return mixed ^ (mixed >> 31);
    }

    uint64_t _state;
};

}  // namespace model
