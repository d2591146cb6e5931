// The tasks that a rule asks for, by the library's classes: the flat interface tells them without their full names.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "addrlist/addr_list_hive.h"
#include "match/rule_matcher.h"
#include "output/text.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "stored/store.h"
#include "tool_error.h"

namespace tool {

class RuleTasks {
public:
    // Opens the policy in the store. Throws a StoreError.
    explicit RuleTasks(const Store& store) {
        int result = ZXPOL_S_OK;
        _lists.reset(ZxPolAddrListHive::open(store.key(), &result));
        require(result, "cannot open the address lists in " + oneLine(store.location()));
        _rules.reset(ZxPolRuleHive::open(store.key(), 0, &result));
        require(result, "cannot open the rules in " + oneLine(store.location()));
    }

    // The full names of the tasks, in the order in which they are to be done. Throws a StoreError.
    std::vector<std::string> namesOf(const std::string& rulePath) const {
        const std::string what = "cannot read the tasks of rule " + oneLine(rulePath);
        int result = ZXPOL_S_OK;
        const std::unique_ptr<ZxPolRule> rule(_rules->openRuleByFullPath(rulePath.c_str(), &result));
        require(result, what);
        // Made anew each time, as it reads the exclusive filter types but once.
        ZxPolRuleMatcher matcher(_lists.get(), _rules.get(), nullptr);
        zxpol::TaskList tasks;
        matcher._resetExcluTable();
        matcher._collectTasks(*rule, rulePath, tasks, &result);
        require(result, what);
        std::vector<std::string> names;
        names.reserve(tasks.size());
        for (const ZxPolRuleMatcher::_TaskListEntry& task : tasks)
            names.push_back(task.path);
        return names;
    }

private:
    std::unique_ptr<ZxPolAddrListHive> _lists;
    std::unique_ptr<ZxPolRuleHive> _rules;
};

}  // namespace tool
