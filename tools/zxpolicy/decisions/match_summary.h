// Decisions on many mails, added up.
#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>

#include "decisions/failed_mails.h"
#include "decisions/latency.h"
#include "decisions/matcher.h"
#include "output/json.h"
#include "stored/rule_tree.h"

namespace tool {

// A duration in the unit that keeps it short: µs up to 10,000, then ms up to 10,000, then s.
std::string durationText(std::chrono::nanoseconds duration);

// Adds up the decisions on many mails.
class MatchSummary {
public:
    // Conditions can be counted when the matcher watches them.
    enum class Conditions { Uncounted, Counted };

    explicit MatchSummary(Conditions conditions = Conditions::Uncounted)
        : _countsConditions(conditions == Conditions::Counted) {}

    void add(const Envelope& envelope, const Decision& decision);

    // The mails that could not be matched.
    const FailedMails& failed() const { return _failed; }

    // The tree of all rules with their numbers, the conditions where they are counted, the tasks asked for, and how
    // long a decision took.
    void print(std::ostream& out, const RuleNode& root) const;

    // The same as an object, with all tasks of the rules.
    Json json(const RuleNode& root) const;

private:
    struct Count {
        uint64_t receivers = 0;
        uint64_t mails = 0;
    };

    // A rule's path, and the position of one of its conditions.
    using ConditionKey = std::pair<std::string, uint32_t>;

    void addConditions(const MatchedRule& rule);
    Count ofRule(const std::string& path) const { return countOf(_rules, path); }
    Count ofCondition(const std::string& path, uint32_t position) const {
        return countOf(_conditions, {path, position});
    }
    Count ofTask(const std::string& name) const { return countOf(_tasks, name); }
    template <class Key>
    static Count countOf(const std::map<Key, Count>& counts, const Key& key) {
        const auto found = counts.find(key);
        return found == counts.end() ? Count{} : found->second;
    }
    Json ruleJson(const RuleNode& node) const;
    void printRules(std::ostream& out, const RuleNode& root) const;
    void printConditions(std::ostream& out, const RuleNode& root) const;
    void printTasks(std::ostream& out, const RuleNode& root) const;
    void printDurations(std::ostream& out) const;

    bool _countsConditions;
    uint64_t _mails = 0;
    uint64_t _receivers = 0;
    Count _unmatched;
    FailedMails _failed;
    std::map<std::string, Count> _rules;
    std::map<ConditionKey, Count> _conditions;
    std::map<std::string, Count> _tasks;
    Latency _latency;
};

}  // namespace tool
