#include "analysis/mark_trial.h"

#include "output/text.h"
#include "stored/rule_tasks.h"
#include "stored/store_copy.h"
#include "tool_error.h"

namespace tool {

namespace {

std::vector<std::vector<std::string>> tasksOf(const Store& store, const std::vector<std::string>& rules) {
    const RuleTasks tasks(store);
    std::vector<std::vector<std::string>> names;
    names.reserve(rules.size());
    for (const std::string& rule : rules)
        names.push_back(tasks.namesOf(rule));
    return names;
}

}  // namespace

MarkTrial::MarkTrial(const Store& store) {
    copyStore(store, _copy);
}

bool MarkTrial::changesTasks(const std::string& rule, const std::string& task,
                             const std::vector<std::string>& matched) const {
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(_copy.key(), 0, &result));
    const RuleHandle open(zxpol_openRuleByFullName(hive.get(), rule.c_str(), &result));
    require(result, "cannot open rule " + oneLine(rule));
    const auto with = tasksOf(_copy, matched);
    zxpol_inactivateTask(open.get(), task.c_str(), 1, &result);
    // A mark that the library does not take away is one that it reads otherwise.
    if (ZX_FAILURE(result)) return true;
    const auto without = tasksOf(_copy, matched);
    zxpol_inactivateTask(open.get(), task.c_str(), 0, &result);
    require(result, "cannot mark a task in rule " + oneLine(rule));
    return with != without;
}

}  // namespace tool
