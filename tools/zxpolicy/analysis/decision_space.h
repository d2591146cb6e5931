// All mails that policies can tell apart, and what each policy decides on them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "analysis/address_space.h"
#include "analysis/address_spelling.h"
#include "analysis/class_bits.h"
#include "analysis/policy_rules.h"
#include "decisions/matcher.h"

namespace tool {

// A condition as classes of addresses see it.
struct ClassCondition {
    static constexpr uint32_t kFails = UINT32_MAX;  // comparing with this side always fails

    uint32_t sender;  // the number of a test
    uint32_t receiver;
};

// The addresses on one side of mails: the classes, and which tests each matches.
class SideClasses {
public:
    explicit SideClasses(ZxPolMatchWeightType weightType) : _space(weightType) {}

    // The number of the test that a side of a condition is; kFails for a list that cannot be looked into. Tests of one
    // policy have its number in common; patterns are the same in all.
    uint32_t add(const std::string& side, uint32_t policy, const StoredRules& stored);

    // Makes the classes. Throws an AnalysisLimit.
    void close();

    size_t size() const { return _classes.size(); }
    const std::string& witness(size_t one) const { return _classes[one].witness; }
    const std::vector<MatchedTest>& matched(size_t one) const { return _classes[one].matched; }
    // Whether the address to show of a class is well-formed, and the classes that may have a well-formed address.
    bool isWellFormed(size_t one) const { return tool::isWellFormed(witness(one)); }
    const ClassBits& wellFormed() const { return _wellFormed; }
    // The classes that match a test.
    const ClassBits& matching(uint32_t test) const { return _matching[test]; }
    bool matches(size_t one, uint32_t test) const { return _matching[test].has(one); }
    // The weight of a match.
    uint32_t weight(size_t one, uint32_t test) const { return _weights[one * _testCount + test]; }
    // A test as conditions write it.
    const std::string& textOf(uint32_t test) const { return _texts[test]; }

private:
    AddressSpace _space;
    std::map<std::pair<uint32_t, std::string>, uint32_t> _tests;
    std::vector<std::string> _texts;
    std::vector<AddressClass> _classes;
    ClassBits _wellFormed;
    std::vector<ClassBits> _matching;
    std::vector<uint16_t> _weights;
    size_t _testCount = 0;
};

// What a policy decides on a sender and a receiver: the number of a rule, or one of these.
constexpr uint32_t kNoRule = UINT32_MAX;
constexpr uint32_t kMatchFails = UINT32_MAX - 1;

/*
 * The mails of one or more policies, as pairs of a class of senders and one of receivers: mails of the same pair are
 * decided alike by each of the policies.
 *
 * Decisions are worked out here for all receivers of a sender at once. They are the matcher's, which tests and every
 * answer that is shown hold them against.
 */
class DecisionSpace {
public:
    DecisionSpace(std::vector<const StoredRules*> policies, const MatchOptions& options);

    const SideClasses& senders() const { return _senders; }
    const SideClasses& receivers() const { return _receivers; }
    const StoredRules& policy(uint32_t policy) const { return *_policies[policy]; }
    const std::vector<ClassCondition>& conditions(uint32_t policy, uint32_t rule) const {
        return _conditions[policy][rule];
    }

    // What a policy decides on each class of receivers, for one class of senders.
    std::vector<uint32_t> decide(uint32_t policy, size_t sender, bool isBest) const;

    // The receivers for which a rule's conditions match, whatever else the policy says, and those for which they fail:
    // first match looks no further than to the first condition that does either, best match at all of them.
    struct Checked {
        ClassBits matched;
        ClassBits failed;
    };
    Checked check(uint32_t policy, uint32_t rule, size_t sender, const ClassBits& receivers, bool isBest) const;

private:
    class FirstMatch;
    class BestMatch;

    Checked checkUpToFirst(uint32_t policy, uint32_t rule, size_t sender, const ClassBits& receivers) const;

    // Looks at all conditions, and calls visit(condition, receivers) for each one that matches; tells the receivers for
    // which one fails, and with it the rule.
    template <class Visit>
    ClassBits compareAll(uint32_t policy, uint32_t rule, size_t sender, const ClassBits& receivers, Visit visit) const;

    std::vector<const StoredRules*> _policies;
    MatchOptions _options;
    SideClasses _senders;
    SideClasses _receivers;
    std::vector<std::vector<std::vector<ClassCondition>>> _conditions;  // by policy and rule
};

}  // namespace tool
