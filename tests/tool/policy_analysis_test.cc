// What the analysis of policies claims, held against all mails over a small alphabet.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "../support/experiment.h"
#include "analysis/decision_diff.h"
#include "analysis/lint.h"
#include "small_policy.h"

namespace tool {

namespace {

SmallPolicyKind kindOf(uint32_t seed) {
    return seed % 3 == 0 ? SmallPolicyKind::Foreign : SmallPolicyKind::Valid;
}

// The decisions on all mails over the small alphabet, by sender.
std::map<std::string, std::vector<std::string>> allDecisions(const Store& store, const MatchOptions& options) {
    std::map<std::string, std::vector<std::string>> all;
    const std::vector<std::string> addresses = smallAddresses();
    for (const std::string& sender : addresses)
        all[sender] = libraryDecisions(store, options, sender, addresses);
    return all;
}

// Every rule that some mail gets to is called reachable; lint itself asks the library about the mail that it tells.
void checkReach(uint32_t seed) {
    const SmallPolicy policy(seed, kindOf(seed));
    MatchOptions options = optionsOf(seed);
    const LintResult lint = lintPolicy(policy.store(), options);
    ASSERT_FALSE(lint.reaches.empty()) << "seed " << seed;
    for (const bool isBest : {false, true}) {
        std::set<std::string> reachable;
        for (const RuleReach& reach : lint.reaches)
            if (isBest ? reach.best : reach.first) reachable.insert(reach.rule);
        // Rules that are said to be out of the reach of well-formed addresses.
        std::set<std::string> malformedOnly;
        for (const Finding& finding : lint.findings)
            if (finding.id == std::string(isBest ? "unreachable-best" : "unreachable-first") && finding.isOfWellFormed)
                malformedOnly.insert(finding.rules.front());
        options.isBest = isBest;
        for (const auto& [sender, decisions] : allDecisions(policy.store(), options))
            for (size_t i = 0; i < decisions.size(); ++i) {
                if (decisions[i].empty() || decisions[i] == "!") continue;
                ASSERT_EQ(reachable.count(decisions[i]), 1U)
                    << "seed " << seed << ", " << (isBest ? "best" : "first") << ": " << sender << " to "
                    << smallAddresses()[i] << " gets to rule " << decisions[i];
                const bool isOutOfReach = malformedOnly.count(decisions[i]) != 0;
                ASSERT_FALSE(isOutOfReach && isWellFormed(SampleMail{sender, smallAddresses()[i]}))
                    << "seed " << seed << ", " << (isBest ? "best" : "first") << ": well-formed " << sender << " to "
                    << smallAddresses()[i] << " gets to rule " << decisions[i];
            }
    }
}

// Where the comparison of two policies sees no difference, no mail shows one, and each change that a mail shows is
// told.
void checkDiff(uint32_t seed, uint32_t& same) {
    const SmallPolicy before(seed, kindOf(seed));
    SmallPolicy after(seed, kindOf(seed));
    after.change(seed + 1000000);
    const MatchOptions options = optionsOf(seed);
    const DecisionDiff diff = compareDecisions(before.store(), after.store(), options, 2);
    std::set<std::pair<std::string, std::string>> told;
    const auto nameOf = [](const DecisionOutcome& outcome) { return outcome.failure.empty() ? outcome.rule : "!"; };
    for (const DecisionChange& change : diff.changes)
        told.emplace(nameOf(change.before), nameOf(change.after));
    if (diff.changed == 0) ++same;
    const auto decisionsBefore = allDecisions(before.store(), options),
               decisionsAfter = allDecisions(after.store(), options);
    for (const auto& [sender, decisions] : decisionsBefore) {
        const std::vector<std::string>& others = decisionsAfter.at(sender);
        for (size_t i = 0; i < decisions.size(); ++i) {
            if (decisions[i] == others[i]) continue;
            ASSERT_EQ(told.count({decisions[i], others[i]}), 1U)
                << "seed " << seed << ": " << sender << " to " << smallAddresses()[i] << " goes from \"" << decisions[i]
                << "\" to \"" << others[i] << "\"";
        }
    }
}

}  // namespace

TEST(PolicyAnalysis, CallsNoRuleUnreachableThatAMailGetsTo) {
    const auto policies = zxtest::shortOrLong<uint32_t>(15, 10000);
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        checkReach(seed);
    if (!HasFatalFailure()) zxtest::figure("analysis", "policies checked for rules out of reach", policies);
}

TEST(PolicyAnalysis, TellsEveryChangeOfDecisionThatAMailShows) {
    const auto policies = zxtest::shortOrLong<uint32_t>(20, 10000);
    uint32_t same = 0;
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        checkDiff(seed, same);
    if (HasFatalFailure()) return;
    // Both answers occur.
    EXPECT_GT(same, policies / 20);
    EXPECT_LT(same, policies - policies / 20);
    zxtest::figure("analysis", "pairs of policies compared on all mails", policies);
}

}  // namespace tool
