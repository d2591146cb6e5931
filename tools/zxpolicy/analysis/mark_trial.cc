#include "analysis/mark_trial.h"

#include <algorithm>

#include "output/text.h"
#include "stored/rule_tasks.h"
#include "stored/store_copy.h"
#include "tool_error.h"

namespace tool {

// Takes a mark of the copy away as long as it lives. A copy to which the mark cannot come back is given up.
class MarkTrial::WithoutMark {
public:
    WithoutMark(MarkTrial& trial, const std::string& rule, const std::string& task) : _trial(trial), _task(task) {
        int result = ZXPOL_S_OK;
        _hive = RuleHiveHandle(zxpol_openRuleHive(trial._copy->key(), 0, &result));
        _rule = RuleHandle(zxpol_openRuleByFullName(_hive.get(), rule.c_str(), &result));
        require(result, "cannot open rule " + oneLine(rule));
        zxpol_inactivateTask(_rule.get(), task.c_str(), 1, &result);
        _isAway = ZX_SUCCESS(result);
    }
    ~WithoutMark() {
        int result = ZXPOL_S_OK;
        if (_isAway) zxpol_inactivateTask(_rule.get(), _task.c_str(), 0, &result);
        _rule = {};
        _hive = {};
        if (ZX_FAILURE(result)) _trial._copy.reset();
    }
    WithoutMark(const WithoutMark&) = delete;
    WithoutMark& operator=(const WithoutMark&) = delete;

    bool isAway() const { return _isAway; }

private:
    MarkTrial& _trial;
    const std::string& _task;
    RuleHiveHandle _hive;
    RuleHandle _rule;
    bool _isAway = false;
};

void MarkTrial::copy() {
    if (_copy) return;
    try {
        copyStore(_store, _copy.emplace("memory:", Store::Missing::Create));
    } catch (...) {
        _copy.reset();
        throw;
    }
}

const std::vector<std::string>& MarkTrial::tasksOf(const std::string& rule) {
    const auto known = _with.find(rule);
    return known != _with.end() ? known->second : _with.emplace(rule, RuleTasks(*_copy).namesOf(rule)).first->second;
}

bool MarkTrial::changesTasks(const std::string& rule, const std::string& task,
                             const std::vector<std::string>& matched) {
    copy();
    // They are known from here on.
    for (const std::string& path : matched)
        tasksOf(path);
    const WithoutMark without(*this, rule, task);
    // A mark that the library does not take away is one that it reads otherwise.
    if (!without.isAway()) return true;
    const RuleTasks tasks(*_copy);
    return std::any_of(matched.begin(), matched.end(),
                       [&](const std::string& path) { return tasks.namesOf(path) != tasksOf(path); });
}

}  // namespace tool
