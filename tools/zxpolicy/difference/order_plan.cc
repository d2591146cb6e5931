#include "difference/order_plan.h"

#include <algorithm>
#include <map>

namespace tool {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

// For each of the numbers whether it belongs to one longest ascending subsequence.
std::vector<bool> longestAscending(const std::vector<size_t>& numbers) {
    std::vector<size_t> tails;  // positions; tails[k] ends the run of length k + 1 with the smallest end
    std::vector<size_t> previous(numbers.size(), kNone);
    for (size_t i = 0; i < numbers.size(); ++i) {
        const auto end = std::lower_bound(tails.begin(), tails.end(), numbers[i],
                                          [&](size_t tail, size_t number) { return numbers[tail] < number; });
        if (end != tails.begin()) previous[i] = *std::prev(end);
        if (end == tails.end())
            tails.push_back(i);
        else
            *end = i;
    }
    std::vector<bool> belongs(numbers.size(), false);
    for (size_t i = tails.empty() ? kNone : tails.back(); i != kNone; i = previous[i])
        belongs[i] = true;
    return belongs;
}

// The same, without `moved` where one as long goes without it.
std::vector<bool> staying(const std::vector<size_t>& numbers, size_t moved) {
    std::vector<bool> longest = longestAscending(numbers);
    const auto at = std::find(numbers.begin(), numbers.end(), moved) - numbers.begin();
    if (at == static_cast<std::ptrdiff_t>(numbers.size()) || !longest[static_cast<size_t>(at)]) return longest;
    std::vector<size_t> others = numbers;
    others.erase(others.begin() + at);
    std::vector<bool> without = longestAscending(others);
    if (std::count(without.begin(), without.end(), true) < std::count(longest.begin(), longest.end(), true))
        return longest;
    without.insert(without.begin() + at, false);
    return without;
}

}  // namespace

std::vector<OrderStep> planOrder(const std::vector<std::string>& current, const std::vector<std::string>& wanted,
                                 const std::string& moved) {
    std::map<std::string, size_t> indexOf;
    for (size_t i = 0; i < wanted.size(); ++i)
        indexOf.emplace(wanted[i], i);
    std::vector<size_t> line;  // the siblings as they stand, as indices into `wanted`
    line.reserve(current.size());
    for (const std::string& name : current)
        line.push_back(indexOf.at(name));
    std::vector<bool> isThere(wanted.size(), false);
    std::vector<bool> stays(wanted.size(), false);
    const auto hint = indexOf.find(moved);
    const std::vector<bool> ascending = staying(line, hint == indexOf.end() ? kNone : hint->second);
    for (size_t i = 0; i < line.size(); ++i) {
        isThere[line[i]] = true;
        stays[line[i]] = ascending[i];
    }

    std::vector<OrderStep> steps;
    for (size_t index = 0; index < wanted.size(); ++index) {
        if (stays[index]) continue;
        if (isThere[index]) line.erase(std::find(line.begin(), line.end(), index));
        const auto before = index == 0 ? line.begin() : std::next(std::find(line.begin(), line.end(), index - 1));
        const auto position = static_cast<uint32_t>(before - line.begin()) + 1;
        line.insert(before, index);
        steps.push_back({index, position, !isThere[index]});
    }
    return steps;
}

}  // namespace tool
