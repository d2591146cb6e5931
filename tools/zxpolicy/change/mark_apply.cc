#include <algorithm>
#include <iterator>

#include "change/apply_context.h"
#include "output/text.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

enum Activation : int { kInactivate = 0, kActivate = 1 };

std::vector<std::string> missingIn(const std::vector<std::string>& from, const std::vector<std::string>& in) {
    std::vector<std::string> missing;
    std::set_difference(from.begin(), from.end(), in.begin(), in.end(), std::back_inserter(missing));
    return missing;
}

void setMark(const RuleHandle& rule, const std::string& task, Activation activation, const std::string& where) {
    int result = ZXPOL_S_OK;
    zxpol_inactivateTask(rule.get(), task.c_str(), activation, &result);
    require(result, "cannot change the inactive mark " + inQuotes(task, 255) + " of rule " + where);
}

}  // namespace

std::vector<std::string> applyInactiveMarks(ApplyContext& context, const RuleHandle& rule, const std::string& path,
                                            const std::string& ruleKey, const Rule& current, const Rule& wanted) {
    // The marks are read once more: deleting a task has removed those for it.
    Rule present;
    present.inactive = readInactiveMarks(context.store, ruleKey);
    const std::vector<std::string> stored = markedTasks(present);
    const std::vector<std::string> target = markedTasks(wanted);
    for (const std::string& task : missingIn(stored, target))
        setMark(rule, task, kActivate, oneLine(path));
    for (const std::string& task : missingIn(target, stored))
        setMark(rule, task, kInactivate, oneLine(path));

    std::vector<std::string> details;
    const std::vector<std::string> before = markedTasks(current);
    countChanges(details, "inactive", missingIn(target, before).size(), missingIn(before, target).size());
    return details;
}

}  // namespace tool
