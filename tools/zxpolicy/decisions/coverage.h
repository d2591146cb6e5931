// Which parts of a policy some decision used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "decisions/matcher.h"
#include "output/json.h"
#include "stored/rule_tree.h"

namespace tool {

// A rule is covered when it took a receiver, a condition when it decided that, a task when it was to be done.
class Coverage {
public:
    explicit Coverage(RuleNode root) : _root(std::move(root)) {}

    // Takes a decision by the policy, of a matcher that watches conditions.
    void add(const Decision& decision);

    // Whether there is such a rule in the policy.
    bool hasRule(const std::string& path) const;

    // How many of 100 rules, conditions and tasks together are covered, rounded down.
    uint32_t percent() const;

    // A line for each part that is not covered; a line with the numbers.
    void printMissing(std::ostream& out) const;
    void printShares(std::ostream& out) const;
    Json json() const;

private:
    struct ConditionPlace {
        std::string rule;
        uint32_t position;  // from 0
        Condition condition;
    };

    // The parts of one kind: how many there are, and those that are not covered.
    template <class Part>
    struct Share {
        size_t total = 0;
        std::vector<Part> missing;

        size_t covered() const { return total - missing.size(); }
    };

    struct Shares {
        Share<std::string> rules;
        Share<ConditionPlace> conditions;
        Share<std::string> tasks;
    };

    Shares shares() const;

    RuleNode _root;
    std::set<std::string> _rules;
    std::set<std::pair<std::string, uint32_t>> _conditions;
    std::set<std::string> _tasks;
};

}  // namespace tool
