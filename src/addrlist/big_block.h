// BigBlock: memory for the tables and texts of a cache.
#pragma once

#include <cstddef>
#include <utility>

namespace zxpol {

// Memory that is not initialised, or filled with zeros. Large blocks are aligned and offered to the system for huge
// pages: a lookup in a list of a million addresses touches places so far apart that most of its time would go into
// finding out where the small pages are.
class BigBlock {
public:
    BigBlock() noexcept = default;
    // Throws std::bad_alloc.
    explicit BigBlock(size_t size);
    static BigBlock zeroed(size_t size);
    BigBlock(BigBlock&& other) noexcept : _memory(std::exchange(other._memory, nullptr)) {}
    BigBlock& operator=(BigBlock&& other) noexcept {
        std::swap(_memory, other._memory);
        return *this;
    }
    ~BigBlock();

    // The memory as an array of `Item`, aligned for any.
    template <class Item>
    Item* as() const noexcept {
        return static_cast<Item*>(_memory);
    }

private:
    void* _memory = nullptr;
};

}  // namespace zxpol
