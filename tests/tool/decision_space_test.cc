// Decisions over classes of mails, held against the matcher's on all mails over a small alphabet.
#include "analysis/decision_space.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "../support/experiment.h"
#include "small_policy.h"

namespace tool {

namespace {

// The rule that a decision is for, as the library tells it.
std::string ruleOf(const DecisionSpace& space, uint32_t decision) {
    if (decision == kNoRule) return "";
    if (decision == kMatchFails) return "!";
    return space.policy(0).rules[decision].path;
}

// A failure of the root's conditions is one of the match, and a mail of the root's is one that they match.
void checkRoot(const DecisionSpace& space, size_t sender, const std::vector<LibraryDecision>& real, bool isBest) {
    const DecisionSpace::Checked root = space.check(0, 0, sender, ClassBits(real.size(), true), isBest);
    for (size_t receiver = 0; receiver < real.size(); ++receiver) {
        const std::string& rule = real[receiver].rule;
        // First match does not get to the root where another rule takes the mail.
        if (!isBest && rule.size() > 1) continue;
        ASSERT_EQ(root.failed.has(receiver), rule == "!") << space.receivers().witness(receiver);
        ASSERT_EQ(root.matched.has(receiver), rule != "" && rule != "!") << space.receivers().witness(receiver);
    }
}

// The rules that answer for all mails of a small policy, as the library says and as the classes say.
void check(uint32_t seed, SmallPolicyKind kind) {
    const SmallPolicy policy(seed, kind);
    const MatchOptions options = optionsOf(seed);
    const StoredRules stored = readStoredRules(policy.store());
    const DecisionSpace space({&stored}, options);
    std::vector<std::string> receivers;
    for (size_t i = 0; i < space.receivers().size(); ++i)
        receivers.push_back(space.receivers().witness(i));
    std::set<std::string> bySpace;
    for (size_t sender = 0; sender < space.senders().size(); ++sender) {
        const std::vector<uint32_t> decisions = space.decide(0, sender, options.isBest);
        const std::vector<LibraryDecision> real =
            libraryDecisions(policy.store(), options, space.senders().witness(sender), receivers);
        for (size_t receiver = 0; receiver < receivers.size(); ++receiver) {
            bySpace.insert(real[receiver].rule);
            ASSERT_EQ(ruleOf(space, decisions[receiver]), real[receiver].rule)
                << "seed " << seed << ", sender " << space.senders().witness(sender) << ", receiver "
                << receivers[receiver];
        }
        checkRoot(space, sender, real, options.isBest);
    }
    // No mail is decided as no class is.
    for (const std::string& sender : smallAddresses())
        for (const LibraryDecision& decision : libraryDecisions(policy.store(), options, sender, smallAddresses()))
            ASSERT_EQ(bySpace.count(decision.rule), 1U) << "seed " << seed << ", sender " << sender << ": " << decision;
}

}  // namespace

TEST(DecisionSpace, DecidesAsTheLibraryDoesOnValidPolicies) {
    const auto policies = zxtest::shortOrLong<uint32_t>(15, 6000);
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        check(seed, SmallPolicyKind::Valid);
    if (!HasFatalFailure()) zxtest::figure("analysis", "valid policies held against all mails", policies);
}

TEST(DecisionSpace, DecidesAsTheLibraryDoesOnWhateverAStoreHolds) {
    const auto policies = zxtest::shortOrLong<uint32_t>(15, 6000);
    for (uint32_t seed = 1; seed <= policies && !HasFatalFailure(); ++seed)
        check(seed, SmallPolicyKind::Foreign);
    if (!HasFatalFailure()) zxtest::figure("analysis", "foreign policies held against all mails", policies);
}

}  // namespace tool
