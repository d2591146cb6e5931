#include "analysis/lint_tasks.h"

#include <algorithm>
#include <utility>

#include "output/text.h"
#include "stored/list_store_reader.h"
#include "stored/names_of.h"
#include "stored/raw_key.h"
#include "tool_error.h"

namespace tool {

namespace {

// A number of a task, if it has it.
std::optional<uint32_t> numberIn(const std::vector<RawValue>& values, const char* name) {
    for (const RawValue& value : values)
        if (value.name == name && value.type == ZXREG_NUMBER) return numberOf(value);
    return std::nullopt;
}

}  // namespace

LintedTasks::LintedTasks(const Store& store, const StoredRules& stored, const std::vector<RuleReach>& reaches,
                         std::vector<Finding>& findings)
    : _store(store), _rules(stored.rules), _reaches(reaches), _findings(findings) {
    int result = ZXPOL_S_OK;
    _hive = RuleHiveHandle(zxpol_openRuleHive(store.key(), 0, &result));
    require(result, "cannot open the rules in " + oneLine(store.location()));
    for (uint32_t rule = 0; rule < _rules.size(); ++rule)
        readTasksOf(rule);
    readExclusiveFilters();
}

void LintedTasks::readTasksOf(uint32_t rule) {
    const KeyHandle tasks = openRawKey(_store.key(), _rules[rule].key + "\\tasks");
    if (!tasks) return;
    for (const std::string& name : rawSubkeys(tasks.get())) {
        const std::vector<RawValue> values = rawValues(openRawKey(tasks.get(), name).get());
        // Without a position nobody sees it, which is a finding of its own.
        if (numberIn(values, "order").value_or(UINT32_MAX) > INT32_MAX) continue;
        // Matching takes a task for enabled, and for not overridable, where it does not say.
        _tasks.push_back({childName(path(rule), name), rule, numberIn(values, "filter"),
                          numberIn(values, "enable").value_or(1) != 0,
                          numberIn(values, "overridable").value_or(0) != 0});
    }
}

// Matching, too, reads them up to the first failure.
void LintedTasks::readExclusiveFilters() {
    for (uint32_t index = 0;; ++index) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        int result = ZXPOL_S_OK;
        zxpol_enumExclusiveFilterType(_hive.get(), index, &filter, &type, &result);
        if (ZX_FAILURE(result)) return;
        _exclusiveFilters.push_back(filter);
    }
}

bool LintedTasks::isOfExclusiveFilter(const TaskFacts& task) const {
    return task.filter &&
           std::find(_exclusiveFilters.begin(), _exclusiveFilters.end(), *task.filter) != _exclusiveFilters.end();
}

bool LintedTasks::isActiveIn(const TaskFacts& task, uint32_t matched) const {
    int result = ZXPOL_S_OK;
    const std::string& deciding = path(task.isOverridable ? matched : task.rule);
    const RuleHandle rule(zxpol_openRuleByFullName(_hive.get(), deciding.c_str(), &result));
    require(result, "cannot open rule " + oneLine(deciding));
    // A failure to read the marks leaves the task active.
    int ignored = ZXPOL_S_OK;
    return zxpol_isTaskActive(rule.get(), task.name.c_str(), &ignored) != 0;
}

void LintedTasks::add(Severity severity, const char* id, const std::string& place, const std::string& text,
                      const std::string& remedy, std::vector<std::string> rules) const {
    _findings.push_back({severity, id, place, text, remedy, std::move(rules)});
}

void lintTasks(const Store& store, const StoredRules& rules, const std::vector<RuleReach>& reaches,
               std::vector<Finding>& findings) {
    const LintedTasks tasks(store, rules, reaches, findings);
    lintOutcomes(tasks);
    lintMarks(tasks);
    lintFates(tasks);
    lintFilters(tasks);
}

}  // namespace tool
