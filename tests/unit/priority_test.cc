#include "pattern/priority.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "pattern/cond_wildcard_pattern.h"

namespace {

constexpr auto unknownWeightType = static_cast<ZxPolMatchWeightType>(7);
constexpr auto unknownPriorityType = static_cast<ZxPolMatchPriorityType>(9);

void expectWeight(const std::string& pattern, uint32_t domainFirst, uint32_t nameFirst) {
    const ZxPolCondWildcardPattern parsed(pattern.c_str());
    EXPECT_EQ(ZxPolPriority::calcWeight(parsed, ZXPOL_WEIGHT_DOMAIN_FIRST), domainFirst) << pattern;
    EXPECT_EQ(ZxPolPriority::calcWeight(parsed, ZXPOL_WEIGHT_NAME_FIRST), nameFirst) << pattern;
    EXPECT_EQ(ZxPolPriority::calcWeight(parsed, unknownWeightType), domainFirst) << pattern;
}

// Compares both ways around.
void expectOrder(const ZxPolPriority& a, const ZxPolPriority& b, ZxPolMatchPriorityType type, int expected) {
    EXPECT_EQ(a.compare(b, type), expected);
    EXPECT_EQ(b.compare(a, type), -expected);
}

TEST(PatternWeight, Everything) {
    expectWeight("*", 0, 0);
    expectWeight("*@*", 0, 0);
    expectWeight("*@", 0, 0);
    expectWeight("\"*@*\"@*", 0, 0);
}

TEST(PatternWeight, NameAtAnyDomain) {
    expectWeight("user@*", 1000, 1000);
    expectWeight("user@*@*", 1000, 1000);
    expectWeight("@*", 1000, 1000);
}

TEST(PatternWeight, AnyNameBelowADomain) {
    expectWeight("*@*.example.com", 2002, 2002);
    expectWeight("*@*.com", 2001, 2001);
    expectWeight("*@[*]", 2000, 2000);
    expectWeight("*@*.*", 2000, 2000);
}

TEST(PatternWeight, NameBelowADomain) {
    expectWeight("user@*.example.com", 3002, 4002);
    expectWeight("user@*.mail.example.com", 3003, 4003);
    expectWeight("user@[*]", 3000, 4000);
}

TEST(PatternWeight, AnyNameAtADomain) {
    expectWeight("*@example.com", 4000, 3000);
    expectWeight("\"*@*\"@example.com", 4000, 3000);
}

TEST(PatternWeight, OneAddress) {
    expectWeight("user@example.com", 5000, 5000);
    expectWeight("user", 5000, 5000);
    expectWeight("", 5000, 5000);
    expectWeight("jo*@example.com", 5000, 5000);
}

TEST(PatternWeight, LongerLiteralSuffixWeighsMore) {
    std::string domain = "*";
    for (uint32_t labels = 1; labels <= 127; ++labels) {
        domain += ".a";
        expectWeight("*@" + domain, 2000 + labels, 2000 + labels);
    }
}

TEST(QualifiedLabels, AreThoseWithoutStars) {
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("*.example.com"), 2U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("*.mail.example.com"), 3U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("*"), 0U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("a*.b*c.*d"), 0U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("a"), 1U);
}

TEST(QualifiedLabels, EmptyOnesCount) {
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms(""), 1U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("*."), 1U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("*..a"), 2U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms("..."), 4U);
    EXPECT_EQ(ZxPolPriority::_calcQualifiedTerms(nullptr), 0U);
}

TEST(Priority, StartsAtZero) {
    const ZxPolPriority priority;
    EXPECT_EQ(priority.senderWeight(), 0U);
    EXPECT_EQ(priority.receiverWeight(), 0U);
}

TEST(Priority, WeightsAreReachedByReference) {
    ZxPolPriority priority(1, 2);
    EXPECT_EQ(priority.senderWeight(), 1U);
    EXPECT_EQ(priority.receiverWeight(), 2U);
    priority.senderWeight() = 30;
    priority.receiverWeight() = 40;
    ZxPolPriority copy;
    copy = priority;
    EXPECT_EQ(copy.senderWeight(), 30U);
    EXPECT_EQ(copy.receiverWeight(), 40U);
    priority.init();
    EXPECT_EQ(priority.senderWeight(), 0U);
    EXPECT_EQ(priority.receiverWeight(), 0U);
}

TEST(Priority, ClassData) {
    EXPECT_EQ(ZxPolPriority::minWeight(), 0U);
    EXPECT_EQ(ZxPolPriority::maxWeight(), 5000U);
    EXPECT_EQ(ZxPolPriority::mMaxPriority.senderWeight(), 5000U);
    EXPECT_EQ(ZxPolPriority::mMaxPriority.receiverWeight(), 5000U);
    const uint32_t expected[2][6] = {{0, 1000, 2000, 3000, 4000, 5000}, {0, 1000, 2000, 4000, 3000, 5000}};
    for (int type = 0; type < 2; ++type) {
        for (int column = 0; column < 6; ++column) {
            EXPECT_EQ(ZxPolPriority::mWeight[type][column], expected[type][column]);
        }
    }
}

TEST(PriorityComparison, TotalComparesSums) {
    expectOrder({5000, 1000}, {1000, 5000}, ZXPOL_PRIORITY_TOTAL, 0);
    expectOrder({5000, 1001}, {1000, 5000}, ZXPOL_PRIORITY_TOTAL, 1);
    expectOrder({0, 0}, {0, 0}, ZXPOL_PRIORITY_TOTAL, 0);
    expectOrder({0, 1}, {0, 0}, ZXPOL_PRIORITY_TOTAL, 1);
}

TEST(PriorityComparison, SenderFirst) {
    expectOrder({5000, 0}, {4000, 5000}, ZXPOL_PRIORITY_SENDER_FIRST, 1);
    // The same class: the sums decide, not the sender's labels.
    expectOrder({3002, 0}, {3001, 5000}, ZXPOL_PRIORITY_SENDER_FIRST, -1);
    expectOrder({3002, 0}, {3001, 1}, ZXPOL_PRIORITY_SENDER_FIRST, 0);
    expectOrder({3002, 7}, {3001, 7}, ZXPOL_PRIORITY_SENDER_FIRST, 1);
    expectOrder({3000, 0}, {2999, 5000}, ZXPOL_PRIORITY_SENDER_FIRST, 1);
}

TEST(PriorityComparison, ReceiverFirst) {
    expectOrder({0, 5000}, {5000, 4000}, ZXPOL_PRIORITY_RECEIVER_FIRST, 1);
    expectOrder({0, 3002}, {5000, 3001}, ZXPOL_PRIORITY_RECEIVER_FIRST, -1);
    expectOrder({4000, 5000}, {5000, 0}, ZXPOL_PRIORITY_RECEIVER_FIRST, 1);
}

TEST(PriorityComparison, UnknownTypeComparesSums) {
    expectOrder({5000, 0}, {4000, 5000}, unknownPriorityType, -1);
    expectOrder({5000, 1000}, {1000, 5000}, unknownPriorityType, 0);
}

TEST(PriorityComparison, NothingBeatsTheHighest) {
    for (uint32_t weight : {0U, 1000U, 4002U, 5000U}) {
        for (auto type : {ZXPOL_PRIORITY_TOTAL, ZXPOL_PRIORITY_SENDER_FIRST, ZXPOL_PRIORITY_RECEIVER_FIRST}) {
            EXPECT_LE(ZxPolPriority(weight, 5000).compare(ZxPolPriority::mMaxPriority, type), 0);
        }
    }
}

TEST(PriorityComparison, SumsDoNotWrap) {
    expectOrder({UINT32_MAX, UINT32_MAX}, {UINT32_MAX, 0}, ZXPOL_PRIORITY_TOTAL, 1);
}

}  // namespace
