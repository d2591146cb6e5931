// Inactive marks that name no task, or change nothing.
#include <algorithm>
#include <set>

#include "analysis/lint_rules.h"
#include "analysis/lint_tasks.h"
#include "analysis/mark_trial.h"
#include "output/text.h"
#include "policy/policy_check.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

class Marks {
public:
    explicit Marks(const LintedTasks& tasks) : _tasks(tasks), _trial(tasks.store()) {}

    void run() {
        for (uint32_t rule = 0; rule < _tasks.rules().size(); ++rule)
            lookAt(rule);
    }

private:
    const std::string& path(uint32_t rule) const { return _tasks.path(rule); }
    bool isAtOrBelow(uint32_t rule, uint32_t ancestor) const {
        return tool::isAtOrBelow(_tasks.rules(), rule, ancestor);
    }

    void lookAt(uint32_t rule) {
        std::set<std::string> seen;
        const std::vector<InactiveMark> marks = readInactiveMarks(_tasks.store(), _tasks.rules()[rule].key);
        for (const InactiveMark& mark : marks) {
            const auto isTwin = [&](const InactiveMark& other) { return markKey(other.task) == markKey(mark.task); };
            const auto isMeant = [&](const TaskFacts& task) { return markKey(task.name) == markKey(mark.task); };
            const auto task = std::find_if(_tasks.tasks().begin(), _tasks.tasks().end(), isMeant);
            const std::string where = "rule " + oneLine(path(rule));
            const std::string what = "its inactive mark " + inQuotes(mark.task, 255);
            const char* remove = "remove the mark";
            if (task == _tasks.tasks().end())
                _tasks.add(Severity::Warning, "dead-mark", where, what + " names no task", "correct it, or remove it",
                           {path(rule)});
            else if (!seen.insert(markKey(mark.task)).second)
                _tasks.add(Severity::Note, "idle-mark", where, what + " is there twice", remove, {path(rule)});
            else if (!task->isEnabled)
                _tasks.add(Severity::Note, "idle-mark", where, what + " names a task that is switched off anyway",
                           remove, {path(rule)});
            else if (!isAtOrBelow(rule, task->rule))
                _tasks.add(Severity::Warning, "idle-mark", where,
                           what + " changes nothing: the task is of rule " + oneLine(path(task->rule)) +
                               ", which is not above this rule",
                           remove, {path(rule), path(task->rule)});
            else if (!task->isOverridable && rule != task->rule)
                _tasks.add(Severity::Warning, "idle-mark", where,
                           what + " changes nothing: the task may be switched off in its own rule only, " +
                               oneLine(path(task->rule)),
                           "make the task overridable, or remove the mark", {path(rule), path(task->rule)});
            else if (std::count_if(marks.begin(), marks.end(), isTwin) == 1 && !isOfUse(rule, *task))
                _tasks.add(Severity::Note, "idle-mark", where,
                           what + " changes nothing: without it, too, an exclusive filter leaves the task out", remove,
                           {path(rule)});
        }
    }

    // Whether the tasks of some mail would be others without a mark that the task's attributes let count. That no mail
    // gets to the rule is a finding of its own.
    bool isOfUse(uint32_t rule, const TaskFacts& task) {
        const std::vector<std::string> matched = rulesDecidedBy(rule, task);
        if (matched.empty()) return true;
        try {
            return keepsOut(rule, task) || _trial.changesTasks(path(rule), task.name, matched);
        } catch (const StoreError&) {
            // That mails for such a rule cannot be matched is one, too.
            return true;
        }
    }

    // Whether nothing but the mark keeps the task out: it is one that no filter leaves out, and its name is not one
    // that switches it off by its length.
    bool keepsOut(uint32_t rule, const TaskFacts& task) const {
        return !_tasks.isOfExclusiveFilter(task) && task.name.size() < ZXPOL_NAME_SIZE &&
               !_tasks.isActiveIn(task, rule);
    }

    // The rules, of those that mails get to, in which a mark of `rule` for the task decides.
    std::vector<std::string> rulesDecidedBy(uint32_t rule, const TaskFacts& task) const {
        std::vector<std::string> paths;
        for (uint32_t other = rule; other < _tasks.rules().size() && isAtOrBelow(other, rule); ++other)
            if ((other == rule || !task.isOverridable) && isReached(_tasks.reaches(), other))
                paths.push_back(path(other));
        return paths;
    }

    const LintedTasks& _tasks;
    MarkTrial _trial;
};

}  // namespace

void lintMarks(const LintedTasks& tasks) {
    Marks(tasks).run();
}

}  // namespace tool
