// The commands that change rules and tasks.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "change/edit_parts.h"
#include "change/policy_edit.h"

namespace tool {

struct RuleEditOptions : EditOptions {
    std::string path;
    TextEdit texts;
    std::optional<uint32_t> matchType;
    std::vector<std::string> conditions;  // SENDER,RECEIVER
    std::vector<std::string> removedConditions;
    std::vector<std::string> inactivated;  // full names of tasks
    std::vector<std::string> activated;
    std::optional<uint32_t> position;
    bool isRecursive = false;
};

struct TaskEditOptions : EditOptions {
    std::string path;
    TextEdit texts;
    std::optional<uint32_t> filter;
    std::optional<bool> enable;
    std::optional<bool> overridable;
    std::vector<std::string> outcomes;  // NAME=TEXT
    std::vector<std::string> removedOutcomes;
    SettingEdit settings;
    std::optional<uint32_t> position;
};

// Each runs a command, with its report to `out` and warnings and notes to `err`. All throw a ToolError, and then
// nothing was changed.

void runRuleAdd(const RuleEditOptions& options, std::ostream& out, std::ostream& err);
void runRuleSet(const RuleEditOptions& options, std::ostream& out, std::ostream& err);
void runRuleMove(const RuleEditOptions& options, std::ostream& out, std::ostream& err);
void runRuleRemove(const RuleEditOptions& options, std::ostream& out, std::ostream& err);

void runTaskAdd(const TaskEditOptions& options, std::ostream& out, std::ostream& err);
void runTaskSet(const TaskEditOptions& options, std::ostream& out, std::ostream& err);
void runTaskMove(const TaskEditOptions& options, std::ostream& out, std::ostream& err);
void runTaskRemove(const TaskEditOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
