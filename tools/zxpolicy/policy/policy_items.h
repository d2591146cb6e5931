// Rules, tasks, classifications and actions as facts for a terminal and as JSON.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "output/fact_lines.h"
#include "output/json.h"
#include "policy/policy_file.h"

namespace tool {

// Where an item stands among its siblings, from 1.
struct Position {
    uint32_t number = 0;
    uint32_t siblings = 0;
};

// What a rule holds: conditions, or a match type that goes without them, inactive marks, tasks.
std::vector<Fact> contentFacts(const Rule& rule);
// The attributes that are not empty and, unless it is the root rule, where it stands.
std::vector<Fact> attributeFacts(const Rule& rule, const std::optional<Position>& position);
std::vector<Fact> factsOf(const Task& task, const Position& position);
std::vector<Fact> factsOf(const Classification& classification);
std::vector<Fact> factsOf(const Action& action, const Position& position);

// Without what is below a rule.
Json jsonOf(const Rule& rule, const std::string& path);
Json jsonOf(const Task& task, const std::string& fullName);
Json jsonOf(const Classification& classification);
Json jsonOf(const Action& action);
Json jsonOf(const Condition& condition);

// The value of a setting as a policy file has it, on one line.
std::string settingText(const SettingItem& item);

}  // namespace tool
