// Durations, counted in constant memory.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace tool {

// Counts durations in classes that are at most 1/32 of their value wide.
class Latency {
public:
    void add(std::chrono::nanoseconds duration);

    uint64_t count() const { return _count; }
    // The duration that `share` (0 to 1) of all do not exceed; 0 without any.
    std::chrono::nanoseconds quantile(double share) const;
    // How many fit into a second, one after the other.
    double perSecond() const;

private:
    static constexpr unsigned int kBits = 5;  // classes for each power of two: 2^kBits

    static size_t classOf(uint64_t nanoseconds);
    static uint64_t middleOf(size_t index);

    std::array<uint64_t, (64 - kBits) << kBits> _classes{};
    uint64_t _count = 0;
    uint64_t _total = 0;
};

}  // namespace tool
