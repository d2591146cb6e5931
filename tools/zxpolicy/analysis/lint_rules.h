// Where rules stand in the tree, and which of them mails get to.
#pragma once

#include <cstdint>
#include <vector>

#include "analysis/lint.h"
#include "analysis/policy_rules.h"

namespace tool {

inline bool isAtOrBelow(const std::vector<StoredRule>& rules, uint32_t rule, uint32_t ancestor) {
    while (rule > ancestor)
        rule = rules[rule].parent;
    return rule == ancestor;
}

// Whether isWanted(rule) for one of the rules below a rule.
template <class IsWanted>
bool anyBelow(const std::vector<StoredRule>& rules, uint32_t rule, IsWanted isWanted) {
    for (uint32_t below = rule + 1; below < rules.size() && isAtOrBelow(rules, below, rule); ++below)
        if (isWanted(below)) return true;
    return false;
}

// Whether mails get to a rule, in whatever mode; true also where that could not be decided.
inline bool isReached(const std::vector<RuleReach>& reaches, uint32_t rule) {
    return reaches.empty() || reaches[rule].first || reaches[rule].best;
}

}  // namespace tool
