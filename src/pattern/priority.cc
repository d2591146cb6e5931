#include "pattern/priority.h"

#include <cstring>

#include "pattern/cond_wildcard_pattern.h"

namespace {

constexpr uint32_t classWidth = 1000;

// The columns of the weight table.
enum PatternClass { everything, nameOnly, partOfDomain, nameAtPartOfDomain, domainOnly, oneAddress };

bool isWildcard(const char* s) {
    return ZxPolCondWildcardPattern::isSingleWildcard(s);
}

PatternClass classify(const ZxPolCondWildcardPattern& pattern) {
    if (pattern.isSingleWildcard()) return everything;
    const bool anyName = isWildcard(pattern.getName());
    if (isWildcard(pattern.getDomain())) return anyName ? everything : nameOnly;
    if (std::strchr(pattern.getDomain(), '*') != nullptr) return anyName ? partOfDomain : nameAtPartOfDomain;
    return anyName ? domainOnly : oneAddress;
}

template <typename Number>
int order(Number a, Number b) {
    return a > b ? 1 : a < b ? -1 : 0;
}

}  // namespace

const uint32_t ZxPolPriority::mWeight[2][6] = {{0, 1000, 2000, 3000, 4000, 5000}, {0, 1000, 2000, 4000, 3000, 5000}};
const ZxPolPriority ZxPolPriority::mMaxPriority(5000, 5000);

void ZxPolPriority::init() {
    *this = ZxPolPriority();
}

uint32_t ZxPolPriority::minWeight() {
    return 0;
}

uint32_t ZxPolPriority::maxWeight() {
    return 5000;
}

uint32_t ZxPolPriority::calcWeight(const ZxPolCondWildcardPattern& pattern, ZxPolMatchWeightType type) {
    const PatternClass patternClass = classify(pattern);
    const uint32_t weight = mWeight[type == ZXPOL_WEIGHT_NAME_FIRST ? 1 : 0][patternClass];
    const bool graded = patternClass == partOfDomain || patternClass == nameAtPartOfDomain;
    return graded ? weight + _calcQualifiedTerms(pattern.getDomain()) : weight;
}

uint32_t ZxPolPriority::_calcQualifiedTerms(const char* domain) {
    uint32_t terms = 0;
    while (domain != nullptr) {
        const size_t length = std::strcspn(domain, ".");
        if (std::memchr(domain, '*', length) == nullptr) ++terms;
        domain = domain[length] == '.' ? domain + length + 1 : nullptr;
    }
    return terms;
}

int ZxPolPriority::compare(const ZxPolPriority& other, ZxPolMatchPriorityType type) const {
    int byClass = 0;
    if (type == ZXPOL_PRIORITY_SENDER_FIRST)
        byClass = order(_senderWeight / classWidth, other._senderWeight / classWidth);
    if (type == ZXPOL_PRIORITY_RECEIVER_FIRST) {
        byClass = order(_receiverWeight / classWidth, other._receiverWeight / classWidth);
    }
    if (byClass != 0) return byClass;
    return order(uint64_t{_senderWeight} + _receiverWeight, uint64_t{other._senderWeight} + other._receiverWeight);
}
