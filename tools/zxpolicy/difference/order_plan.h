// The fewest moves that bring siblings into a wanted order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// Put the item `wanted[index]` at `position` (from 1), either as a new item or by moving it there.
struct OrderStep {
    size_t index;
    uint32_t position;
    bool isNew;
};

// The steps, to be done in turn, that make `wanted` of `current`. All of `current` must be in `wanted`; both hold
// each name once. The items that stay are a longest run that is in the right order already; where there are several
// such runs, one without the item `moved`, if that is given.
std::vector<OrderStep> planOrder(const std::vector<std::string>& current, const std::vector<std::string>& wanted,
                                 const std::string& moved = "");

}  // namespace tool
