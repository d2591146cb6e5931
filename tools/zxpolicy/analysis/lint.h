// The checks of a whole policy.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/analysis_limit.h"
#include "analysis/decision_space.h"
#include "analysis/finding.h"
#include "analysis/policy_rules.h"
#include "decisions/matcher.h"
#include "stored/store.h"

namespace tool {

// A mail that gets to a rule, if there is one.
struct RuleReach {
    std::string rule;
    std::optional<SampleMail> first;
    std::optional<SampleMail> best;
};

struct LintResult {
    std::vector<Finding> findings;   // in the order of the checks, and of the policy
    std::vector<RuleReach> reaches;  // of all rules; empty when that could not be decided
};

// Checks the policy of a store that nobody changes meanwhile. The options' mode does not count: both are looked at.
// Throws a ToolError when the store cannot be read, or when a finding does not stand up to the library.
LintResult lintPolicy(const Store& store, const MatchOptions& options);

// ---- the checks -------------------------------------------------------------------------------------------

// Positions, numbers and forms of what is stored.
void lintStoredForms(const Store& store, const StoredRules& rules, std::vector<Finding>& findings);
// Conditions by themselves: what they refer to, and whether they are patterns at all. `reaches` tells the rules that
// mails get to, here and below; empty for all.
void lintConditions(const StoredRules& rules, const std::vector<RuleReach>& reaches, std::vector<Finding>& findings);
// Conditions beside each other and their parents'.
void lintCoverage(const DecisionSpace& space, std::vector<Finding>& findings);
// The finding that which mails get to the rules was not decided.
Finding undecidedRules(const StoredRules& rules, const AnalysisLimit& limit);
// Rules that no mail gets to; tells a mail for each of the others.
std::vector<RuleReach> lintReach(const Store& store, const DecisionSpace& space, const MatchOptions& options,
                                 std::vector<Finding>& findings);
// Tasks, inactive marks, exclusive filters and outcomes.
void lintTasks(const Store& store, const StoredRules& rules, const std::vector<RuleReach>& reaches,
               std::vector<Finding>& findings);

}  // namespace tool
