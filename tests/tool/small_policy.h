// Policies of few words, so that rules are often in each other's way, and all mails over the same words.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "decisions/matcher.h"
#include "stored/store.h"

namespace tool {

// What a random policy may hold.
enum class SmallPolicyKind {
    Valid,   // conditions and entries that the library takes
    Foreign  // whatever another program may have written: any pattern, and conditions that are none
};

// Makes a policy in a store of its own, the same one for the same seed.
class SmallPolicy {
public:
    SmallPolicy(uint32_t seed, SmallPolicyKind kind);

    const Store& store() const { return _store; }
    // Changes some of it.
    void change(uint32_t seed);
    // Takes a rule away, and those below it.
    void removeRule(const std::string& rulePath);
    // Takes a condition away, counted from 1.
    void removeCondition(const std::string& rulePath, size_t number);
    // Leaves no rules but the root, with one condition.
    void keepOnlyRoot(const std::string& condition);

private:
    size_t upTo(size_t most) { return _random() % (most + 1); }
    std::string pick(const std::vector<std::string>& from) { return from[upTo(from.size() - 1)]; }
    std::string address();
    std::string pattern();
    std::string side();
    std::string conditionText();
    void makeList(const std::string& name);
    void fillList(const std::string& name);
    void writeConditions(const std::string& rulePath);
    void writeMarks(const std::string& rulePath);
    void makeTasks(const std::string& rulePath, const RuleHandle& rule);
    void makeRules(const std::string& parentPath, const RuleHandle& parent, int depth);
    void makeFilters(const RuleHiveHandle& hive);

    std::mt19937 _random;
    bool _isForeign;
    Store _store;
    std::vector<std::string> _rules;  // their paths
    std::vector<std::string> _tasks;  // their full names
};

// All texts of up to `length` characters.
std::vector<std::string> allTexts(const std::string& alphabet, size_t length);

// Ways to match: all of them in turn.
MatchOptions optionsOf(uint32_t seed);

// All addresses that tell such policies apart: over the same words, and a few more.
std::vector<std::string> smallAddresses();

// What the library decides on a mail.
struct LibraryDecision {
    std::string rule;                // its path; empty for none, "!" for a match that fails
    std::vector<std::string> tasks;  // full names, in the order in which they are to be done

    bool operator==(const LibraryDecision& other) const { return rule == other.rule && tasks == other.tasks; }
    bool operator!=(const LibraryDecision& other) const { return !(*this == other); }
    bool operator<(const LibraryDecision& other) const {
        return std::tie(rule, tasks) < std::tie(other.rule, other.tasks);
    }
};

std::ostream& operator<<(std::ostream& out, const LibraryDecision& decision);

// The decisions on one mail to each of the receivers alone.
std::vector<LibraryDecision> libraryDecisions(const Store& store, const MatchOptions& options,
                                              const std::string& sender, const std::vector<std::string>& receivers);

}  // namespace tool
