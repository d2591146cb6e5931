// The tasks of a policy as the checks of them see them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/lint.h"
#include "stored/handles.h"

namespace tool {

struct TaskFacts {
    std::string name;                // in full
    uint32_t rule;                   // that has it
    std::optional<uint32_t> filter;  // its filter type, exclusive or not, where it has one
    bool isEnabled = true;
    bool isOverridable = false;
};

class LintedTasks {
public:
    // Reads the tasks. Throws a StoreError.
    LintedTasks(const Store& store, const StoredRules& stored, const std::vector<RuleReach>& reaches,
                std::vector<Finding>& findings);

    const Store& store() const { return _store; }
    const std::vector<StoredRule>& rules() const { return _rules; }
    const std::string& path(uint32_t rule) const { return _rules[rule].path; }
    const std::vector<RuleReach>& reaches() const { return _reaches; }
    const std::vector<TaskFacts>& tasks() const { return _tasks; }
    const std::vector<uint32_t>& exclusiveFilters() const { return _exclusiveFilters; }
    bool isOfExclusiveFilter(const TaskFacts& task) const;

    // Whether no mark switches the task off in a rule, for mails that match `matched`. Throws a StoreError.
    bool isActiveIn(const TaskFacts& task, uint32_t matched) const;

    void add(Severity severity, const char* id, const std::string& place, const std::string& text,
             const std::string& remedy, std::vector<std::string> rules) const;

private:
    void readTasksOf(uint32_t rule);
    void readExclusiveFilters();

    const Store& _store;
    const std::vector<StoredRule>& _rules;
    const std::vector<RuleReach>& _reaches;
    std::vector<Finding>& _findings;
    std::vector<TaskFacts> _tasks;
    RuleHiveHandle _hive;
    std::vector<uint32_t> _exclusiveFilters;
};

// What outcomes name.
void lintOutcomes(const LintedTasks& tasks);
// Inactive marks that name nothing or change nothing.
void lintMarks(const LintedTasks& tasks);
// Tasks that no mail gets, and exclusive filters that no task has.
void lintFates(const LintedTasks& tasks);
void lintFilters(const LintedTasks& tasks);

}  // namespace tool
