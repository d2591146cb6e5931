#include "decisions/latency.h"

#include <algorithm>
#include <cmath>

namespace tool {

// Below 2^(kBits + 1) each number has a class of its own; above, the number of leading bits gives the row.
size_t Latency::classOf(uint64_t nanoseconds) {
    unsigned int shift = 0;
    while (nanoseconds >> shift >= uint64_t{2} << kBits)
        ++shift;
    return (static_cast<size_t>(shift) << kBits) + static_cast<size_t>(nanoseconds >> shift);
}

uint64_t Latency::middleOf(size_t index) {
    const size_t row = index >> kBits;
    const size_t shift = row < 2 ? 0 : row - 1;
    const uint64_t lowest = static_cast<uint64_t>(index - (shift << kBits)) << shift;
    return lowest + ((uint64_t{1} << shift) >> 1);
}

void Latency::add(std::chrono::nanoseconds duration) {
    const auto nanoseconds = static_cast<uint64_t>(std::max<int64_t>(duration.count(), 0));
    ++_classes[std::min(classOf(nanoseconds), _classes.size() - 1)];
    ++_count;
    _total += nanoseconds;
}

std::chrono::nanoseconds Latency::quantile(double share) const {
    if (_count == 0) return std::chrono::nanoseconds{0};
    const auto rank = static_cast<uint64_t>(std::ceil(share * static_cast<double>(_count)));
    uint64_t seen = 0;
    size_t index = 0;
    while (index + 1 < _classes.size() && (seen += _classes[index]) < std::max<uint64_t>(rank, 1))
        ++index;
    return std::chrono::nanoseconds(static_cast<int64_t>(middleOf(index)));
}

double Latency::perSecond() const {
    return _total == 0 ? 0 : static_cast<double>(_count) * 1e9 / static_cast<double>(_total);
}

}  // namespace tool
