// Tasks that no mail gets, and exclusive filters that no task has.
#include <algorithm>
#include <map>
#include <set>

#include "analysis/lint_rules.h"
#include "analysis/lint_tasks.h"
#include "output/text.h"
#include "stored/rule_tasks.h"
#include "tool_error.h"

namespace tool {

namespace {

bool isIn(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

class Fates {
public:
    explicit Fates(const LintedTasks& tasks) : _tasks(tasks) {
        const RuleTasks ruleTasks(tasks.store());
        for (uint32_t rule = 0; rule < tasks.rules().size(); ++rule) {
            if (!isReached(tasks.reaches(), rule)) continue;
            try {
                _asked[rule] = ruleTasks.namesOf(tasks.path(rule));
            } catch (const StoreError&) {
                // That mails for this rule cannot be matched is a finding of its own.
            }
        }
    }

    void run() const {
        for (const TaskFacts& task : _tasks.tasks())
            if (task.isEnabled) lookAt(task);
    }

private:
    void lookAt(const TaskFacts& task) const {
        bool isSwitchedOff = false, isLeftOut = false;
        std::set<std::string> instead;
        for (const auto& [rule, names] : _asked) {
            if (!isAtOrBelow(_tasks.rules(), rule, task.rule)) continue;
            if (isIn(names, task.name)) return;
            if (!_tasks.isActiveIn(task, rule)) {
                isSwitchedOff = true;
                continue;
            }
            isLeftOut = true;
            for (const TaskFacts& other : _tasks.tasks())
                if (other.filter == task.filter && isIn(names, other.name)) instead.insert(other.name);
        }
        if (isLeftOut && task.filter)
            addDropped(task, isSwitchedOff, instead);
        else if (isSwitchedOff && !isLeftOut)
            addNeverActive(task);
    }

    void addDropped(const TaskFacts& task, bool isSwitchedOff, const std::set<std::string>& instead) const {
        const std::string filter = "the exclusive filter " + std::to_string(*task.filter);
        std::string text = isSwitchedOff ? "for every mail inactive marks or " + filter + " leave it out"
                                         : "for every mail " + filter + " leaves it out";
        for (const std::string& name : instead)
            text += (name != *instead.begin() ? ", "
                     : isSwitchedOff          ? ", the filter in favour of "
                                              : " in favour of ") +
                    oneLine(name);
        _tasks.add(Severity::Warning, "dropped-task", "task " + oneLine(task.name), text,
                   isSwitchedOff ? "give it another filter type, or remove a mark, or the task"
                                 : "give it another filter type, or remove it",
                   {_tasks.path(task.rule)});
    }

    void addNeverActive(const TaskFacts& task) const {
        const bool isTooLong = task.name.size() >= ZXPOL_NAME_SIZE;
        const std::string text = isTooLong ? "its full name is " + counted(task.name.size(), "byte") +
                                                 " long, and one of more than " + grouped(ZXPOL_NAME_SIZE - 1) +
                                                 " switches a task off for every mail"
                                           : "inactive marks switch it off for every mail";
        _tasks.add(isTooLong ? Severity::Warning : Severity::Note, "never-active", "task " + oneLine(task.name), text,
                   isTooLong ? "shorten its name, or those of the rules above it" : "remove a mark, or the task",
                   {_tasks.path(task.rule)});
    }

    const LintedTasks& _tasks;
    std::map<uint32_t, std::vector<std::string>> _asked;  // the tasks that rules ask for which mails get to
};

}  // namespace

void lintFates(const LintedTasks& tasks) {
    Fates(tasks).run();
}

void lintFilters(const LintedTasks& tasks) {
    for (const uint32_t filter : tasks.exclusiveFilters()) {
        const bool isUsed = std::any_of(tasks.tasks().begin(), tasks.tasks().end(),
                                        [&](const TaskFacts& task) { return task.filter == filter; });
        if (!isUsed)
            tasks.add(Severity::Note, "unused-filter", "exclusive filter " + std::to_string(filter),
                      "no task is of this filter type", "remove it, or give the tasks that are meant this type", {});
    }
}

}  // namespace tool
