// A buffer of a stated size between two stretches that nobody may write to.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace zxtest {

class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size) : _size(size), _bytes(size + 2 * kGuard, kCanary) {}

    char* get() { return _bytes.data() + kGuard; }

    // Whether the stretches around the buffer are as they were.
    bool isIntact() const { return isCanary(0, kGuard) && isCanary(kGuard + _size, kGuard); }

    // Whether nothing was written into the buffer either.
    bool isUntouched() const { return isCanary(0, _bytes.size()); }

private:
    static constexpr size_t kGuard = 64;
    static constexpr char kCanary = 0x5a;

    bool isCanary(size_t from, size_t count) const {
        const auto begin = _bytes.begin() + static_cast<std::ptrdiff_t>(from);
        return std::all_of(begin, begin + static_cast<std::ptrdiff_t>(count), [](char c) { return c == kCanary; });
    }

    size_t _size;
    std::vector<char> _bytes;
};

}  // namespace zxtest
