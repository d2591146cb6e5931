// Tasks that nothing comes of, inactive marks that change nothing, and what outcomes and exclusive filters name.
#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "analysis/lint.h"
#include "analysis/mark_trial.h"
#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_file.h"
#include "result_names.h"
#include "stored/classification_store_reader.h"
#include "stored/list_store_reader.h"
#include "stored/names_of.h"
#include "stored/policy_store_reader.h"
#include "stored/raw_key.h"
#include "stored/rule_tasks.h"
#include "tool_error.h"

namespace tool {

namespace {

struct TaskFacts {
    std::string name;                // in full
    uint32_t rule;                   // that has it
    std::optional<uint32_t> filter;  // none is of no exclusive type
    bool isEnabled = true;
    bool isOverridable = false;
};

// A number of a task, if it has it.
std::optional<uint32_t> numberIn(const std::vector<RawValue>& values, const char* name) {
    for (const RawValue& value : values)
        if (value.name == name && value.type == ZXREG_NUMBER) return numberOf(value);
    return std::nullopt;
}

class Tasks {
public:
    Tasks(const Store& store, const StoredRules& stored, const std::vector<RuleReach>& reaches,
          std::vector<Finding>& findings)
        : _store(store), _stored(stored), _reaches(reaches), _findings(findings) {
        for (uint32_t rule = 0; rule < stored.rules.size(); ++rule)
            read(rule);
    }

    void run() {
        lookAtOutcomes();
        for (uint32_t rule = 0; rule < _stored.rules.size(); ++rule)
            lookAtMarks(rule);
        lookAtFates();
        lookAtFilters();
    }

private:
    const std::string& path(uint32_t rule) const { return _stored.rules[rule].path; }

    void read(uint32_t rule) {
        const KeyHandle tasks = openRawKey(_store.key(), _stored.rules[rule].key + "\\tasks");
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

    // ---- outcomes ----

    void lookAtOutcomes() {
        const std::vector<std::string> names = readClassificationNames(_store);
        const std::set<std::string> known(names.begin(), names.end());
        for (const TaskFacts& task : _tasks) {
            const std::string own = task.name.substr(task.name.rfind('\\') + 1);
            const KeyHandle outcomes =
                openRawKey(_store.key(), _stored.rules[task.rule].key + "\\tasks\\" + own + "\\Classification");
            if (!outcomes) continue;
            for (const RawValue& value : rawValues(outcomes.get())) {
                if (!isText(value) || known.count(textOf(value)) != 0) continue;
                add(Severity::Warning, "missing-classification", "task " + oneLine(task.name),
                    "its outcome " + inQuotes(value.name) + " names " + inQuotes(textOf(value)) +
                        ", and there is no such classification",
                    "make the classification, or correct the outcome; letter case counts", {path(task.rule)});
            }
        }
    }

    // ---- marks ----

    bool isAtOrBelow(uint32_t rule, uint32_t ancestor) const {
        while (rule != ancestor && rule != 0)
            rule = _stored.rules[rule].parent;
        return rule == ancestor;
    }

    // The rules, of those that mails get to, in which a mark of `rule` for the task decides.
    std::vector<std::string> rulesDecidedBy(uint32_t rule, const TaskFacts& task) const {
        std::vector<std::string> paths;
        for (uint32_t other = 0; other < _stored.rules.size(); ++other) {
            const bool isDecided = task.isOverridable ? other == rule : isAtOrBelow(other, rule);
            if (isDecided && isReached(other)) paths.push_back(path(other));
        }
        return paths;
    }

    // Whether the tasks of some mail would be others without a mark that the task's attributes let count. That no mail
    // gets to the rule is a finding of its own.
    bool isMarkOfUse(uint32_t rule, const TaskFacts& task) {
        const std::vector<std::string> matched = rulesDecidedBy(rule, task);
        if (matched.empty()) return true;
        if (!_trial) _trial.emplace(_store);
        try {
            return _trial->changesTasks(path(rule), task.name, matched);
        } catch (const StoreError&) {
            // That mails for such a rule cannot be matched is one, too.
            return true;
        }
    }

    void lookAtMarks(uint32_t rule) {
        std::set<std::string> seen;
        const std::vector<InactiveMark> marks = readInactiveMarks(_store, _stored.rules[rule].key);
        for (const InactiveMark& mark : marks) {
            const auto isTwin = [&](const InactiveMark& other) { return markKey(other.task) == markKey(mark.task); };
            const auto isMeant = [&](const TaskFacts& task) { return markKey(task.name) == markKey(mark.task); };
            const auto task = std::find_if(_tasks.begin(), _tasks.end(), isMeant);
            const std::string where = "rule " + oneLine(path(rule));
            const std::string what = "its inactive mark " + inQuotes(mark.task, 255);
            const char* remove = "remove the mark";
            if (task == _tasks.end())
                add(Severity::Warning, "dead-mark", where, what + " names no task", "correct it, or remove it",
                    {path(rule)});
            else if (!seen.insert(markKey(mark.task)).second)
                add(Severity::Note, "idle-mark", where, what + " is there twice", remove, {path(rule)});
            else if (!task->isEnabled)
                add(Severity::Note, "idle-mark", where, what + " names a task that is switched off anyway", remove,
                    {path(rule)});
            else if (!isAtOrBelow(rule, task->rule))
                add(Severity::Warning, "idle-mark", where,
                    what + " changes nothing: the task is of rule " + oneLine(path(task->rule)) +
                        ", which is not above this rule",
                    remove, {path(rule), path(task->rule)});
            else if (!task->isOverridable && rule != task->rule)
                add(Severity::Warning, "idle-mark", where,
                    what + " changes nothing: the task may be switched off in its own rule only, " +
                        oneLine(path(task->rule)),
                    "make the task overridable, or remove the mark", {path(rule), path(task->rule)});
            else if (std::count_if(marks.begin(), marks.end(), isTwin) == 1 && !isMarkOfUse(rule, *task))
                add(Severity::Note, "idle-mark", where,
                    what + " changes nothing: without it, too, an exclusive filter leaves the task out", remove,
                    {path(rule)});
        }
    }

    // ---- what comes of tasks ----

    bool isReached(uint32_t rule) const { return _reaches.empty() || _reaches[rule].first || _reaches[rule].best; }

    bool isActiveIn(const RuleHiveHandle& hive, const TaskFacts& task, uint32_t matched) const {
        int result = ZXPOL_S_OK;
        const std::string& deciding = path(task.isOverridable ? matched : task.rule);
        const RuleHandle rule(zxpol_openRuleByFullName(hive.get(), deciding.c_str(), &result));
        require(result, "cannot open rule " + oneLine(deciding));
        // A failure to read the marks leaves the task active.
        int ignored = ZXPOL_S_OK;
        return zxpol_isTaskActive(rule.get(), task.name.c_str(), &ignored) != 0;
    }

    void lookAtFates() {
        std::map<uint32_t, std::vector<std::string>> asked;  // the tasks that rules ask for
        const RuleTasks ruleTasks(_store);
        for (uint32_t rule = 0; rule < _stored.rules.size(); ++rule) {
            if (!isReached(rule)) continue;
            try {
                asked[rule] = ruleTasks.namesOf(path(rule));
            } catch (const StoreError&) {
                // That mails for this rule cannot be matched is a finding of its own.
            }
        }
        int result = ZXPOL_S_OK;
        const RuleHiveHandle hive(zxpol_openRuleHive(_store.key(), 0, &result));
        require(result, "cannot open the rules in " + oneLine(_store.location()));
        for (const TaskFacts& task : _tasks)
            if (task.isEnabled) lookAtFate(hive, task, asked);
    }

    void lookAtFate(const RuleHiveHandle& hive, const TaskFacts& task,
                    const std::map<uint32_t, std::vector<std::string>>& asked) {
        bool isSeen = false, isActive = false;
        std::set<std::string> instead;
        for (const auto& [rule, names] : asked) {
            if (!isAtOrBelow(rule, task.rule)) continue;
            isSeen = true;
            if (std::find(names.begin(), names.end(), task.name) != names.end()) return;
            if (!isActiveIn(hive, task, rule)) continue;
            isActive = true;
            for (const TaskFacts& other : _tasks)
                if (other.filter == task.filter && std::find(names.begin(), names.end(), other.name) != names.end())
                    instead.insert(other.name);
        }
        if (!isSeen) return;
        if (!isActive) return addNeverActive(task);
        if (!task.filter) return;
        std::string text = "for every mail the exclusive filter " + std::to_string(*task.filter) + " leaves it out";
        for (const std::string& name : instead)
            text += (name == *instead.begin() ? " in favour of " : ", ") + oneLine(name);
        add(Severity::Warning, "dropped-task", "task " + oneLine(task.name), text,
            "give it another filter type, or remove it", {path(task.rule)});
    }

    void addNeverActive(const TaskFacts& task) {
        const bool isTooLong = task.name.size() >= ZXPOL_NAME_SIZE;
        const std::string text = isTooLong ? "its full name is " + counted(task.name.size(), "byte") +
                                                 " long, and one of more than " + grouped(ZXPOL_NAME_SIZE - 1) +
                                                 " switches a task off for every mail"
                                           : "inactive marks switch it off for every mail";
        add(isTooLong ? Severity::Warning : Severity::Note, "never-active", "task " + oneLine(task.name), text,
            isTooLong ? "shorten its name, or those of the rules above it" : "remove a mark, or the task",
            {path(task.rule)});
    }

    void lookAtFilters() {
        int result = ZXPOL_S_OK;
        const RuleHiveHandle hive(zxpol_openRuleHive(_store.key(), 0, &result));
        require(result, "cannot open the rules in " + oneLine(_store.location()));
        for (uint32_t index = 0;; ++index) {
            uint32_t filter = 0;
            ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
            zxpol_enumExclusiveFilterType(hive.get(), index, &filter, &type, &result);
            if (ZX_FAILURE(result)) return;
            const bool isUsed =
                std::any_of(_tasks.begin(), _tasks.end(), [&](const TaskFacts& task) { return task.filter == filter; });
            if (!isUsed)
                add(Severity::Note, "unused-filter", "exclusive filter " + std::to_string(filter),
                    "no task is of this filter type", "remove it, or give the tasks that are meant this type", {});
        }
    }

    void add(Severity severity, const char* id, const std::string& place, const std::string& text,
             const std::string& remedy, std::vector<std::string> rules) {
        _findings.push_back({severity, id, place, text, remedy, std::move(rules)});
    }

    const Store& _store;
    const StoredRules& _stored;
    const std::vector<RuleReach>& _reaches;
    std::vector<Finding>& _findings;
    std::vector<TaskFacts> _tasks;
    std::optional<MarkTrial> _trial;  // made when it is first needed
};

}  // namespace

void lintTasks(const Store& store, const StoredRules& rules, const std::vector<RuleReach>& reaches,
               std::vector<Finding>& findings) {
    Tasks(store, rules, reaches, findings).run();
}

}  // namespace tool
