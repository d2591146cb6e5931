// How exactly a pattern names an address, and which of two matches is the better one.
#include "pattern/priority.h"

#include <gtest/gtest.h>

#include <utility>

#include "pattern/cond_wildcard_pattern.h"

namespace {

constexpr ZxPolMatchWeightType weightType(uint32_t number) {
    return static_cast<ZxPolMatchWeightType>(number);
}
constexpr ZxPolMatchPriorityType priorityType(uint32_t number) {
    return static_cast<ZxPolMatchPriorityType>(number);
}
// The weights of a pattern under both types.
std::pair<uint32_t, uint32_t> weights(const char* pattern) {
    const ZxPolCondWildcardPattern parsed(pattern);
    return {ZxPolPriority::calcWeight(parsed, weightType(0)), ZxPolPriority::calcWeight(parsed, weightType(1))};
}
using Weights = std::pair<uint32_t, uint32_t>;

int compare(ZxPolPriority a, ZxPolPriority b, uint32_t type) {
    const int result = a.compare(b, priorityType(type));
    EXPECT_EQ(-result, b.compare(a, priorityType(type)));
    return result;
}

TEST(PatternWeight, DependsOnTheClassOfThePattern) {
    EXPECT_EQ(Weights(5000, 5000), weights("user@example.com"));
    EXPECT_EQ(Weights(4000, 3000), weights("*@example.com"));
    EXPECT_EQ(Weights(3002, 4002), weights("user@*.example.com"));
    EXPECT_EQ(Weights(2002, 2002), weights("*@*.example.com"));
    EXPECT_EQ(Weights(2003, 2003), weights("*@*.mail.example.com"));
    EXPECT_EQ(Weights(1000, 1000), weights("user@*"));
    EXPECT_EQ(Weights(0, 0), weights("*"));
    EXPECT_EQ(Weights(0, 0), weights("*@*"));
    EXPECT_EQ(Weights(5000, 5000), weights("user@[10.0.0.1]"));
    EXPECT_EQ(Weights(3000, 4000), weights("user@[*]"));
    EXPECT_EQ(Weights(2000, 2000), weights("*@[*]"));
}

TEST(PatternWeight, UnknownTypesActAsZero) {
    const ZxPolCondWildcardPattern pattern("*@example.com");
    EXPECT_EQ(4000u, ZxPolPriority::calcWeight(pattern, weightType(7)));
    EXPECT_EQ(4000u, ZxPolPriority::calcWeight(pattern, weightType(2)));
    EXPECT_EQ(4000u, ZxPolPriority::calcWeight(pattern, weightType(0xffffffffu)));
}

TEST(PatternWeight, CountsTheLabelsWithoutAStar) {
    EXPECT_EQ(2u, ZxPolPriority::_calcQualifiedTerms("*.example.com"));
    EXPECT_EQ(3u, ZxPolPriority::_calcQualifiedTerms("*.mail.example.com"));
    EXPECT_EQ(0u, ZxPolPriority::_calcQualifiedTerms("*"));
    EXPECT_EQ(1u, ZxPolPriority::_calcQualifiedTerms("com"));
    EXPECT_EQ(2u, ZxPolPriority::_calcQualifiedTerms("*.a."));  // the empty last label counts
    EXPECT_EQ(1u, ZxPolPriority::_calcQualifiedTerms(""));
}

TEST(PatternWeight, HasItsLimits) {
    EXPECT_EQ(0u, ZxPolPriority::minWeight());
    EXPECT_EQ(5000u, ZxPolPriority::maxWeight());
    EXPECT_EQ(5000u, ZxPolPriority::mMaxPriority.senderWeight());
    EXPECT_EQ(5000u, ZxPolPriority::mMaxPriority.receiverWeight());
}

TEST(PriorityComparison, BySumOfBothSides) {
    EXPECT_EQ(0, compare({5000, 1000}, {1000, 5000}, 0));
    EXPECT_EQ(1, compare({3002, 0}, {3001, 0}, 0));
    EXPECT_EQ(-1, compare({5000, 0}, {4000, 5000}, 0));
}

TEST(PriorityComparison, BySendersClassFirst) {
    EXPECT_EQ(1, compare({5000, 0}, {4000, 5000}, 1));
    EXPECT_EQ(-1, compare({3002, 0}, {3001, 5000}, 1));
    EXPECT_EQ(0, compare({3002, 1}, {3001, 2}, 1));
}

TEST(PriorityComparison, ByReceiversClassFirst) {
    EXPECT_EQ(1, compare({0, 5000}, {5000, 4000}, 2));
    EXPECT_EQ(-1, compare({0, 3002}, {5000, 3001}, 2));
}

TEST(PriorityComparison, UnknownTypesActAsTheSum) {
    EXPECT_EQ(-1, compare({5000, 0}, {4000, 5000}, 9));
    EXPECT_EQ(0, compare({5000, 1000}, {1000, 5000}, 0xffffffffu));
}

TEST(Priority, StartsAndRestartsAtZero) {
    ZxPolPriority priority;
    EXPECT_EQ(0u, priority.senderWeight());
    EXPECT_EQ(0u, priority.receiverWeight());
    priority.senderWeight() = 7;
    priority.receiverWeight() = 8;
    ZxPolPriority other;
    other = priority;
    EXPECT_EQ(7u, other.senderWeight());
    EXPECT_EQ(8u, other.receiverWeight());
    priority.init();
    EXPECT_EQ(0u, priority.senderWeight() + priority.receiverWeight());
}

}  // namespace
