// What a match told of one mail: why each receiver has its rule, and each rule its tasks.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "decisions/matcher.h"
#include "zxpolicy_explain.h"

namespace tool {

struct Weights {
    uint32_t sender = 0;
    uint32_t receiver = 0;
};

// One side of a condition beside an address.
struct SideTest {
    ZxPolMatchSide side = ZXPOL_SIDE_RECEIVER;
    std::string pattern;
    std::string address;
    bool isMatched = false;
    uint32_t weight = 0;               // when matched
    std::optional<std::string> entry;  // of a list that matched
    int result = ZXPOL_S_OK;
};

struct ConditionTest {
    uint32_t index = 0;
    std::vector<SideTest> sides;
};

// A rule in the walk for one receiver.
struct RuleVisit {
    enum class Kind {
        Checked,
        Unopened,        // the rule is passed over
        UnknownChildren  // the rules below it cannot be enumerated
    };

    Kind kind = Kind::Checked;
    std::string path;
    std::vector<ConditionTest> conditions;
    bool isMatched = false;
    uint32_t decisive = 0;                  // the condition that decides
    Weights weights;                        // when matched
    int result = ZXPOL_S_OK;                // a failure for which the rule is passed over
    int unread = ZXPOL_S_OK;                // a failure for which it has no further conditions
    ZxPolMatchFate fate = ZXPOL_FATE_NONE;  // of a child in best match
    std::optional<std::string> other;       // the best of its siblings before it
};

// The walk for one receiver.
struct Walk {
    std::string receiver;
    std::vector<RuleVisit> rules;
    std::optional<std::string> rule;  // the answer
    int result = ZXPOL_S_OK;
};

struct TaskVisit {
    std::string path;
    ZxPolMatchFate fate = ZXPOL_FATE_NONE;
    uint32_t filter = 0;
    bool isEnabled = false;
    bool isOverridable = false;
    std::optional<std::string> other;
    std::optional<std::string> mark;
    std::optional<std::string> markRule;
    std::optional<std::string> replacedBy;  // a later task
};

// Marks of a rule that cannot be read.
struct UnreadMarks {
    std::string rule;
    int result = ZXPOL_S_OK;
};

// The tasks for one matched rule.
struct Collection {
    std::string rule;
    std::vector<TaskVisit> tasks;
    std::vector<UnreadMarks> unreadMarks;

    // The full names of the tasks to do, in order.
    std::vector<std::string> taken() const;
};

struct Explanation {
    Envelope envelope;
    MatchOptions options;
    uint32_t restarts = 0;
    int unreadFilters = ZXPOL_S_OK;  // a failure for which there are no further exclusive filters
    std::vector<Walk> walks;
    std::vector<Collection> collections;
    Decision decision;
    int result = ZXPOL_S_OK;  // a failure leaves what was told before it, and no decision
};

}  // namespace tool
