// ZxPolPriority: how exactly a rule's condition names a mail's sender and receiver.
#pragma once

#include <cstdint>

#include "zxpolicy.h"

class ZxPolCondWildcardPattern;

/**
 * A pair of weights, each from 0 (the pattern names nothing) to 5000 (it names one address). The thousands of a weight
 * are the class of its pattern; below them, partly wildcarded domains count their literal labels.
 *
 * The class data is constant and there before any constructor runs. A priority is a plain value: any two
 * numbers make one.
 */
class ZXPOL_API ZxPolPriority {
public:
    /// Weights by weight type and class of pattern.
    static const uint32_t mWeight[2][6];
    /// Both sides named exactly: no priority is higher.
    static const ZxPolPriority mMaxPriority;

    /// Both weights 0.
    constexpr ZxPolPriority() : _senderWeight(0), _receiverWeight(0) {}
    /// The two weights given.
    constexpr ZxPolPriority(uint32_t sender, uint32_t receiver) : _senderWeight(sender), _receiverWeight(receiver) {}

    /// Sets both weights to 0.
    void init();

    /// @{
    /// The weight of the one side; may be assigned to.
    uint32_t& senderWeight() { return _senderWeight; }
    uint32_t& receiverWeight() { return _receiverWeight; }
    const uint32_t& senderWeight() const { return _senderWeight; }
    const uint32_t& receiverWeight() const { return _receiverWeight; }
    /// @}

    /// The weight of a pattern that matches everything: 0.
    static uint32_t minWeight();

    /// The weight of one full address: 5000.
    static uint32_t maxWeight();

    /// The weight of a match against `pattern`. Unknown types act as ZXPOL_WEIGHT_DOMAIN_FIRST.
    static uint32_t calcWeight(const ZxPolCondWildcardPattern& pattern, ZxPolMatchWeightType type);

    /// The labels of `domain` without "*", empty ones included; 0 for null.
    static uint32_t _calcQualifiedTerms(const char* domain);

    /// 1 when this priority is higher than `other`, -1 when it is lower, 0 when they are equal. With
    /// ZXPOL_PRIORITY_SENDER_FIRST or ZXPOL_PRIORITY_RECEIVER_FIRST the classes of that side decide, and the sums of
    /// both weights between equal classes; else, for unknown types too, the sums alone.
    int compare(const ZxPolPriority& other, ZxPolMatchPriorityType type) const;

private:
    uint32_t _senderWeight;
    uint32_t _receiverWeight;
};
