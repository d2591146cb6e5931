// The commands that change tasks.
#include "change/rule_commands.h"
#include "output/remarks.h"
#include "stored/policy_path.h"

namespace tool {

namespace {

void editOutcomes(Task& task, const TaskEditOptions& options) {
    const auto what = [&](const std::string& name) {
        return "outcome " + inQuotes(name, kMaxName) + " of " + taskText(options.path);
    };
    for (const std::string& name : options.removedOutcomes)
        if (task.outcomes.erase(name) == 0) failForMissing(what(name));
    for (const std::string& outcome : options.outcomes) {
        const auto [name, text] = splitAssignment(outcome, "the outcome");
        const std::string fault = nameFault(name);
        if (!fault.empty()) throw UsageError("the name of outcome " + inQuotes(name) + " " + fault);
        if (text.empty()) throw UsageError("outcome " + inQuotes(name, kMaxName) + " is empty");
        requireNoNamesake(task.outcomes, name, what(name));
        task.outcomes[name] = {text, {}};
    }
}

void editTask(Task& task, const TaskEditOptions& options) {
    editTexts(task, options.texts);
    task.filter = options.filter.value_or(task.filter);
    task.enable = options.enable.value_or(task.enable);
    task.overridable = options.overridable.value_or(task.overridable);
    editOutcomes(task, options);
    editSetting(task.setting, options.settings, taskText(options.path));
}

// What `apply` notes of a policy file: texts that name no classification, which they need not do.
std::vector<std::string> notesOn(const Policy& policy, const TaskEditOptions& options) {
    std::vector<std::string> notes;
    for (const std::string& outcome : options.outcomes) {
        const auto [name, text] = splitAssignment(outcome, "the outcome");
        if (findNamed(policy.classifications, text) == policy.classifications.end())
            notes.push_back("the text " + inQuotes(text) + " of outcome " + inQuotes(name) + " of " +
                            taskText(options.path) + " names no classification");
    }
    return notes;
}

// Removing a task removes the inactive marks for it, in its rule and below.
void removeMarks(Rule& rule, const std::string& task) {
    removeMark(rule, task);
    for (Rule& child : rule.rules)
        removeMarks(child, task);
}

// A change of the rule that the task belongs to.
using RuleChange = std::function<void(Policy& policy, Rule& rule, const std::string& name)>;

void editRuleOf(const TaskEditOptions& options, const RuleChange& change, std::ostream& out, std::ostream& err) {
    const auto [path, name] = splitFullPath(options.path);
    std::vector<std::string> notes;
    const auto edit = [&, path = path, name = name](Policy& policy) {
        change(policy, findRule(policy, path), name);
        notes = notesOn(policy, options);
    };
    editPolicy(options, edit, out, err);
    printRemarks(err, "note", notes, " more texts of outcomes name no classification");
}

}  // namespace

void runTaskAdd(const TaskEditOptions& options, std::ostream& out, std::ostream& err) {
    const TaskEditOptions asked = withFullPath(options);
    if (asked.path.size() > kMaxName)
        throw UsageError("the full name of " + taskText(asked.path) + " is longer than 255 bytes");
    const auto add = [&](Policy&, Rule& rule, const std::string& name) {
        Task task;
        task.name = name;
        editTask(task, asked);
        addNamed(rule.tasks, task, asked.position, taskText(asked.path));
    };
    editRuleOf(asked, add, out, err);
}

void runTaskSet(const TaskEditOptions& options, std::ostream& out, std::ostream& err) {
    const TaskEditOptions asked = withFullPath(options);
    const auto set = [&](Policy& policy, Rule&, const std::string&) { editTask(findTask(policy, asked.path), asked); };
    editRuleOf(asked, set, out, err);
}

void runTaskMove(const TaskEditOptions& options, std::ostream& out, std::ostream& err) {
    TaskEditOptions asked = withFullPath(options);
    asked.moved = asked.path;
    const auto move = [&](Policy&, Rule& rule, const std::string& name) {
        moveNamed(rule.tasks, name, asked.position, taskText(asked.path));
    };
    editRuleOf(asked, move, out, err);
}

void runTaskRemove(const TaskEditOptions& options, std::ostream& out, std::ostream& err) {
    const TaskEditOptions asked = withFullPath(options);
    const auto remove = [&](Policy&, Rule& rule, const std::string& name) {
        removeNamed(rule.tasks, name, taskText(asked.path));
        removeMarks(rule, asked.path);
    };
    editRuleOf(asked, remove, out, err);
}

}  // namespace tool
