#include "difference/order_plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tool {

namespace {

using Names = std::vector<std::string>;

// Does the steps as a store would: a moved or new item ends up at its position.
Names follow(Names line, const Names& wanted, const std::vector<OrderStep>& steps) {
    for (const OrderStep& step : steps) {
        const std::string& name = wanted[step.index];
        const auto found = std::find(line.begin(), line.end(), name);
        EXPECT_EQ(found == line.end(), step.isNew) << name;
        if (found != line.end()) line.erase(found);
        EXPECT_GE(step.position, 1u);
        EXPECT_LE(step.position, line.size() + 1);
        line.insert(line.begin() + static_cast<std::ptrdiff_t>(step.position) - 1, name);
    }
    return line;
}

// The length of the longest run of `line` that is in the order of `wanted`, by trying all.
size_t longestRun(const Names& line, const Names& wanted) {
    size_t longest = 0;
    for (unsigned int set = 0; set < 1u << line.size(); ++set) {
        std::vector<std::ptrdiff_t> places;
        for (size_t i = 0; i < line.size(); ++i)
            if ((set >> i & 1u) != 0)
                places.push_back(std::find(wanted.begin(), wanted.end(), line[i]) - wanted.begin());
        if (std::is_sorted(places.begin(), places.end())) longest = std::max(longest, places.size());
    }
    return longest;
}

}  // namespace

TEST(OrderPlan, MakesEveryOrderOfEveryOtherWithTheFewestMoves) {
    const Names wanted{"a", "b", "c", "d", "e"};
    for (unsigned int set = 0; set < 32; ++set) {
        Names current;
        for (size_t i = 0; i < wanted.size(); ++i)
            if ((set >> i & 1u) != 0) current.push_back(wanted[i]);
        do {
            for (const char* moved : {"", "a", "c", "e"}) {
                const std::vector<OrderStep> steps = planOrder(current, wanted, moved);
                EXPECT_EQ(follow(current, wanted, steps), wanted);
                EXPECT_EQ(steps.size(), wanted.size() - longestRun(current, wanted));
            }
        } while (std::next_permutation(current.begin(), current.end()));
    }
}

TEST(OrderPlan, MovesOneItemOnceEvenFromOneEndToTheOther) {
    EXPECT_EQ(planOrder({"a", "b", "c", "d"}, {"b", "c", "d", "a"}).size(), 1u);
    EXPECT_EQ(planOrder({"a", "b", "c", "d"}, {"d", "a", "b", "c"}).size(), 1u);
    EXPECT_TRUE(planOrder({"a", "b"}, {"a", "b"}).empty());
    EXPECT_TRUE(planOrder({}, {}).empty());
}

TEST(OrderPlan, OfTwoThatChangePlacesTheOneAskedForIsMoved) {
    for (const char* moved : {"b", "c"}) {
        const std::vector<std::string> wanted{"a", "c", "b", "d"};
        const std::vector<OrderStep> steps = planOrder({"a", "b", "c", "d"}, wanted, moved);
        ASSERT_EQ(steps.size(), 1u);
        EXPECT_EQ(wanted[steps[0].index], moved);
    }
    // What takes more moves than others is not done.
    EXPECT_EQ(planOrder({"a", "b", "c"}, {"c", "a", "b"}, "a").size(), 1u);
    EXPECT_TRUE(planOrder({"a", "b"}, {"a", "b"}, "a").empty());
    EXPECT_EQ(planOrder({"a", "b"}, {"b", "a"}, "none").size(), 1u);
}

}  // namespace tool
