// The finding that no mail gets to a rule.
#pragma once

#include <cstdint>

#include "analysis/decision_space.h"
#include "analysis/finding.h"
#include "analysis/unreached_rule_answers.h"

namespace tool {

struct UnreachedRule {
    uint32_t rule;
    Answers answers;              // for the mails that match its conditions
    bool isBest;                  // the mode in which none gets to it
    bool isReachedOtherwise;      // in the other mode mails get to it
    bool isOthersReachedBelow;    // in one of the modes mails get to rules below it
    bool isOfWellFormed = false;  // mails get to it, though none with well-formed addresses: the others do not count
};

// Tells what becomes of the mails instead, the most kinds of them first.
Finding unreachedRule(const DecisionSpace& space, const UnreachedRule& unreached);

}  // namespace tool
