// What the analysis of policies claims, held against all mails over a small alphabet.
#include <gtest/gtest.h>

#include <algorithm>
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

using Mail = std::pair<std::string, std::string>;  // sender, receiver

// The decisions on all mails over the small alphabet.
std::map<Mail, LibraryDecision> allDecisions(const Store& store, const MatchOptions& options) {
    std::map<Mail, LibraryDecision> all;
    const std::vector<std::string> addresses = smallAddresses();
    for (const std::string& sender : addresses) {
        const std::vector<LibraryDecision> decisions = libraryDecisions(store, options, sender, addresses);
        for (size_t i = 0; i < addresses.size(); ++i)
            all[{sender, addresses[i]}] = decisions[i];
    }
    return all;
}

bool isWellFormedMail(const Mail& mail) {
    return isWellFormed(SampleMail{mail.first, mail.second});
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
        for (const auto& [mail, decision] : allDecisions(policy.store(), options)) {
            if (decision.rule.empty() || decision.rule == "!") continue;
            SCOPED_TRACE("seed " + std::to_string(seed) + (isBest ? ", best: " : ", first: ") + mail.first + " to " +
                         mail.second + " gets to rule " + decision.rule);
            ASSERT_EQ(reachable.count(decision.rule), 1U);
            ASSERT_FALSE(malformedOnly.count(decision.rule) != 0 && isWellFormedMail(mail));
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
    const auto decisionOf = [](const DecisionOutcome& outcome) {
        return outcome.failure.empty() ? LibraryDecision{outcome.rule, outcome.tasks} : LibraryDecision{"!", {}};
    };
    std::set<std::pair<LibraryDecision, LibraryDecision>> told;
    for (const DecisionChange& change : diff.changes)
        told.emplace(decisionOf(change.before), decisionOf(change.after));
    if (diff.changed == 0) ++same;
    const auto decisionsAfter = allDecisions(after.store(), options);
    for (const auto& [mail, decision] : allDecisions(before.store(), options)) {
        const LibraryDecision& other = decisionsAfter.at(mail);
        if (decision == other) continue;
        ASSERT_EQ(told.count({decision, other}), 1U) << "seed " << seed << ": " << mail.first << " to " << mail.second
                                                     << " goes from " << decision << " to " << other;
    }
}

// The number of the condition that a finding is about.
size_t conditionOf(const Finding& finding) {
    return std::stoul(finding.place.substr(finding.place.rfind(' ')));
}

// Without a condition that is called covered all mails, or all with well-formed addresses, are decided as before.
void checkCovered(uint32_t seed, uint32_t& covered) {
    MatchOptions options = optionsOf(seed);
    const LintResult lint = lintPolicy(SmallPolicy(seed, kindOf(seed)).store(), options);
    for (const Finding& finding : lint.findings) {
        if (finding.id != std::string("covered-condition")) continue;
        ++covered;
        const SmallPolicy with(seed, kindOf(seed));
        SmallPolicy without(seed, kindOf(seed));
        without.removeCondition(finding.rules.front(), conditionOf(finding));
        for (const bool isBest : {false, true}) {
            // The condition may make the rule weigh more.
            if (isBest && finding.severity == Severity::Note) continue;
            options.isBest = isBest;
            const auto decisionsWithout = allDecisions(without.store(), options);
            for (const auto& [mail, decision] : allDecisions(with.store(), options)) {
                if (finding.isOfWellFormed && !isWellFormedMail(mail)) continue;
                ASSERT_EQ(decision, decisionsWithout.at(mail))
                    << "seed " << seed << (isBest ? ", best: " : ", first: ") << mail.first << " to " << mail.second
                    << "; " << finding.place;
            }
        }
    }
}

// Whether it is said that the rule itself, and not something in it, may be deleted.
bool isDeletionOfRule(const Finding& finding) {
    return !finding.rules.empty() && finding.place == "rule " + finding.rules.front() &&
           (finding.remedy.find("delete it") != std::string::npos ||
            finding.remedy.find("delete the rule") != std::string::npos);
}

// Without a rule that may be deleted all mails, or all with well-formed addresses, are decided as before.
void checkDeletable(uint32_t seed, uint32_t& deleted) {
    const SmallPolicy with(seed, kindOf(seed));
    MatchOptions options = optionsOf(seed);
    const LintResult lint = lintPolicy(with.store(), options);
    for (const bool isBest : {false, true}) {
        options.isBest = isBest;
        const auto decisions = allDecisions(with.store(), options);
        for (const Finding& finding : lint.findings) {
            if (!isDeletionOfRule(finding)) continue;
            ++deleted;
            SmallPolicy without(seed, kindOf(seed));
            without.removeRule(finding.rules.front());
            const auto decisionsWithout = allDecisions(without.store(), options);
            for (const auto& [mail, decision] : decisions) {
                if (finding.isOfWellFormed && !isWellFormedMail(mail)) continue;
                ASSERT_EQ(decision, decisionsWithout.at(mail))
                    << "seed " << seed << (isBest ? ", best: " : ", first: ") << mail.first << " to " << mail.second
                    << "; " << finding.place;
            }
        }
    }
}

// Which mails match single conditions, where all lists are as in a policy.
class ConditionMatches {
public:
    ConditionMatches(uint32_t seed, const MatchOptions& options) : _seed(seed), _options(options) {}

    bool matches(const std::string& condition, const Mail& mail) const {
        return libraryDecisions(policyOf(condition).store(), _options, mail.first, {mail.second}).front().rule == "\\";
    }

    // Those over the small alphabet.
    const std::set<Mail>& of(const std::string& condition) {
        const auto [place, isNew] = _known.try_emplace(condition);
        if (isNew)
            for (const auto& [mail, decision] : allDecisions(policyOf(condition).store(), _options))
                if (decision.rule == "\\") place->second.insert(mail);
        return place->second;
    }

private:
    SmallPolicy policyOf(const std::string& condition) const {
        SmallPolicy policy(_seed, kindOf(_seed));
        policy.keepOnlyRoot(condition);
        return policy;
    }

    uint32_t _seed;
    MatchOptions _options;
    std::map<std::string, std::set<Mail>> _known;
};

std::string textOf(const StoredRule::Condition& condition) {
    return condition.sender + "," + condition.receiver;
}

// A mail that is told to match a condition and none above does so; where none is told, none with well-formed addresses
// is outside.
void checkOutside(uint32_t seed, uint32_t& outside) {
    MatchOptions options = optionsOf(seed);
    options.isBest = false;
    const SmallPolicy policy(seed, kindOf(seed));
    const LintResult lint = lintPolicy(policy.store(), options);
    std::map<std::pair<std::string, size_t>, Mail> told;
    for (const Finding& finding : lint.findings)
        if (finding.id == std::string("outside-parent"))
            told[{finding.rules.front(), conditionOf(finding)}] = {finding.mail->sender, finding.mail->receiver};
    outside += static_cast<uint32_t>(told.size());
    const std::vector<StoredRule> rules = readStoredRules(policy.store()).rules;
    ConditionMatches conditions(seed, options);
    for (size_t rule = 1; rule < rules.size(); ++rule)
        for (size_t i = 0; i < rules[rule].conditions.size(); ++i) {
            const std::string text = textOf(rules[rule].conditions[i]);
            SCOPED_TRACE("seed " + std::to_string(seed) + ", rule " + rules[rule].path + ": " + text);
            const std::vector<StoredRule::Condition>& above = rules[rules[rule].parent].conditions;
            const auto isAbove = [&](const auto& matchesMail) {
                return std::any_of(above.begin(), above.end(), [&](const StoredRule::Condition& condition) {
                    return matchesMail(textOf(condition));
                });
            };
            const auto found = told.find({rules[rule].path, i + 1});
            if (found != told.end()) {
                const Mail& mail = found->second;
                ASSERT_TRUE(conditions.matches(text, mail)) << mail.first << " to " << mail.second;
                ASSERT_FALSE(isAbove([&](const std::string& other) { return conditions.matches(other, mail); }))
                    << mail.first << " to " << mail.second;
                continue;
            }
            for (const Mail& mail : conditions.of(text)) {
                if (!isWellFormedMail(mail)) continue;
                ASSERT_TRUE(isAbove([&](const std::string& other) { return conditions.of(other).count(mail) != 0; }))
                    << mail.first << " to " << mail.second;
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

TEST(PolicyAnalysis, CallsNoConditionCoveredThatMatters) {
    const auto policies = zxtest::shortOrLong<uint32_t>(40, 10000);
    uint32_t covered = 0;
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        checkCovered(seed, covered);
    if (HasFatalFailure()) return;
    EXPECT_GT(covered, 0U);
    zxtest::figure("analysis", "covered conditions taken away", covered);
}

TEST(PolicyAnalysis, AdvisesDeletingNoRuleThatMatters) {
    const auto policies = zxtest::shortOrLong<uint32_t>(6, 5000);
    uint32_t deleted = 0;
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        checkDeletable(seed, deleted);
    if (HasFatalFailure()) return;
    EXPECT_GT(deleted, 0U);
    zxtest::figure("analysis", "deletions of rules that get no mails", deleted);
}

TEST(PolicyAnalysis, TellsEveryConditionOutsideItsParent) {
    const auto policies = zxtest::shortOrLong<uint32_t>(20, 10000);
    uint32_t outside = 0;
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        checkOutside(seed, outside);
    if (HasFatalFailure()) return;
    EXPECT_GT(outside, 0U);
    zxtest::figure("analysis", "conditions outside their parents", outside);
}

}  // namespace tool
