// Decisions on mails by a store's policy.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "decisions/envelope_reader.h"
#include "stored/store.h"

namespace tool {

struct MatchOptions {
    bool isBest = false;
    ZxPolMatchPriorityType priority = ZXPOL_PRIORITY_TOTAL;
    ZxPolMatchWeightType weight = ZXPOL_WEIGHT_DOMAIN_FIRST;
};

// Sets the process's options of best matching. Throws a StoreError.
void setMatchOptions(const MatchOptions& options);

struct MatchedRule {
    std::string path;
    std::vector<std::string> receivers;
    std::vector<std::string> tasks;    // full names, in the order in which they are to be done
    std::vector<uint32_t> conditions;  // for each receiver the position of the one that decided; empty if unwatched
};

struct Decision {
    std::vector<MatchedRule> matches;  // in the order of first match
    std::vector<std::string> unmatched;
    std::chrono::nanoseconds duration{0};  // of the library's answer alone
    int failure = 0;                       // why the policy cannot match the mail: a result code, or 0

    // The match of each receiver; receivers without a rule are not in it. Valid while the decision stays as it is.
    std::map<std::string_view, const MatchedRule*> byReceiver() const;
};

// Tells the full names of the tasks that a matched rule asks for, in the order in which they are to be done. Throws a
// StoreError.
using TaskLookup = std::function<std::vector<std::string>(const std::string& rulePath)>;
using TaskLookupMaker = std::function<TaskLookup(const Store&)>;

class Matcher {
public:
    // Whether decisions say which conditions decided. Watching takes more time.
    enum class Conditions { Unwatched, Watched };

    // Opens the policy in the store, and sets the process's options of best matching. Throws a ToolError.
    Matcher(const Store& store, const MatchOptions& options, TaskLookup lookup,
            Conditions conditions = Conditions::Unwatched);

    // Takes other options for the mails to come; those of best matching are the process's.
    void setOptions(const MatchOptions& options);

    // Decides on one mail by the policy of one moment, whatever other processes do meanwhile. Throws a StoreError.
    Decision decide(const Envelope& envelope);

    // The same, where a failure of the policy is an outcome. Throws a StoreError when the store fails.
    Decision decideOrFail(const Envelope& envelope);

    const RuleHiveHandle& rules() const { return _rules; }

private:
    class Answer;

    Decision decideOnce(const Envelope& envelope, std::vector<const char*>& receivers);
    Decision decideUnchanged(const Envelope& envelope, std::vector<const char*>& receivers);
    const std::vector<std::string>& tasksOf(const std::string& rulePath, uint32_t count);

    const Store& _store;
    TaskLookup _lookup;
    Conditions _conditions;
    uint32_t _mode = 0;
    ListHiveHandle _lists;
    RuleHiveHandle _rules;
    // The tasks by rule, as the policy with this stamp has them.
    std::map<std::string, std::vector<std::string>> _tasks;
    uint64_t _tasksStamp = 0;
};

}  // namespace tool
