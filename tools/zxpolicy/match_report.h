// How decisions are shown.
#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>

#include "latency.h"
#include "matcher.h"
#include "rule_tree.h"

namespace tool {

class Json;

// Adds matches (rule, receivers, tasks) and unmatched to an object.
void addDecision(Json& json, const Decision& decision);

// One JSON object on one line: sender, matches (rule, receivers, tasks), unmatched.
void printJson(std::ostream& out, const Envelope& envelope, const Decision& decision);

// One mail for a person: each rule with its receivers and its tasks in order, then the receivers without a rule.
void printText(std::ostream& out, const Envelope& envelope, const Decision& decision);

// A duration in the unit that keeps it short: µs up to 10,000, then ms up to 10,000, then s.
std::string durationText(std::chrono::nanoseconds duration);

// Adds up the decisions on many mails.
class MatchSummary {
public:
    void add(const Envelope& envelope, const Decision& decision);

    // The tree of all rules with their numbers, the tasks asked for, and how long a decision took.
    void print(std::ostream& out, const RuleNode& root) const;

private:
    struct Count {
        uint64_t receivers = 0;
        uint64_t mails = 0;
    };

    void printRules(std::ostream& out, const RuleNode& root) const;
    void printTasks(std::ostream& out, const RuleNode& root) const;
    void printDurations(std::ostream& out) const;

    uint64_t _mails = 0;
    uint64_t _receivers = 0;
    Count _unmatched;
    std::map<std::string, Count> _rules;
    std::map<std::string, Count> _tasks;
    Latency _latency;
};

}  // namespace tool
