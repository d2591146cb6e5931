#include <map>
#include <set>

#include "change/apply_context.h"
#include "difference/attribute_differences.h"
#include "difference/order_plan.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

_ZxPolTaskAttr recordOf(const Task& task) {
    _ZxPolTaskAttr attr{};
    copyText(attr.displayName, task.displayName);
    copyText(attr.comment, task.comment);
    attr.filter = task.filter;
    attr.enable = task.enable ? 1 : 0;
    attr.overridable = task.overridable ? 1 : 0;
    return attr;
}

// Deletes before it adds, so that a name whose letter case changed is never there twice.
std::vector<std::string> applyOutcomes(const TaskHandle& handle, const std::string& where, const Task& current,
                                       const Task& wanted) {
    int result = ZXPOL_S_OK;
    for (const auto& [name, outcome] : current.outcomes) {
        if (wanted.outcomes.count(name) != 0) continue;
        zxpol_deleteOutcome(handle.get(), name.c_str(), &result);
        require(result, "cannot delete outcome " + inQuotes(name, 255) + " of task " + where);
    }
    for (const auto& [name, outcome] : wanted.outcomes) {
        const auto found = current.outcomes.find(name);
        if (found != current.outcomes.end() && found->second == outcome) continue;
        zxpol_addOutcome(handle.get(), name.c_str(), outcome.text.c_str(), &result);
        require(result, "cannot set outcome " + inQuotes(name, 255) + " of task " + where);
    }
    return outcomeDifferences(current, wanted);
}

class TaskApplier {
public:
    TaskApplier(ApplyContext& context, const RuleHandle& rule, const std::string& path)
        : _context(context), _rule(rule), _path(path) {}

    void run(const Rule& current, const Rule& wanted) {
        std::vector<std::string> wantedNames;
        for (const Task& task : wanted.tasks)
            wantedNames.push_back(task.name);
        const std::set<std::string> isWanted(wantedNames.begin(), wantedNames.end());
        std::map<std::string, const Task*> kept;
        std::vector<std::string> keptNames;
        for (const Task& task : current.tasks) {
            if (isWanted.count(task.name) == 0) {
                remove(task.name);
                continue;
            }
            kept[task.name] = &task;
            keptNames.push_back(task.name);
        }
        for (const OrderStep& step : planOrder(keptNames, wantedNames, _context.movedBelow(_path))) {
            if (step.isNew)
                create(wanted.tasks[step.index], step.position);
            else
                move(wanted.tasks[step.index].name, step.position);
        }
        for (const Task& task : wanted.tasks)
            if (const auto found = kept.find(task.name); found != kept.end()) change(*found->second, task);
    }

private:
    std::string fullName(const std::string& name) const { return childName(_path, name); }

    // Removes the task, and with it the inactive marks for it here and below.
    void remove(const std::string& name) {
        int result = ZXPOL_S_OK;
        zxpol_deleteTask(_rule.get(), name.c_str(), &result);
        require(result, "cannot delete task " + oneLine(fullName(name)));
        _context.changes.add(Change::Kind::Deleted, "task", fullName(name));
    }

    void create(const Task& task, uint32_t position) {
        const std::string where = oneLine(fullName(task.name));
        _ZxPolTaskAttr attr = recordOf(task);
        attr.order = position;
        int result = ZXPOL_S_OK;
        const TaskHandle handle(zxpol_createTask(_rule.get(), task.name.c_str(), &attr, &result));
        require(result, "cannot create task " + where);
        applyContent(handle, where, Task{}, task);
        _context.changes.add(Change::Kind::Created, "task", fullName(task.name));
    }

    void move(const std::string& name, uint32_t position) {
        int result = ZXPOL_S_OK;
        zxpol_setTaskOrder(_rule.get(), name.c_str(), position, &result);
        require(result, "cannot move task " + oneLine(fullName(name)));
        _context.changes.add(Change::Kind::Moved, "task", fullName(name), {"to position " + std::to_string(position)});
    }

    void change(const Task& current, const Task& wanted) {
        std::vector<std::string> details = attributeDifferences(current, wanted);
        if (details.empty() && current.outcomes == wanted.outcomes && current.setting == wanted.setting) return;
        const std::string where = oneLine(fullName(wanted.name));
        int result = ZXPOL_S_OK;
        const TaskHandle handle(zxpol_openTask(_rule.get(), wanted.name.c_str(), &result));
        const _ZxPolTaskAttr attr = recordOf(wanted);
        if (!details.empty()) zxpol_setTaskAttrib(handle.get(), &attr, &result);
        require(result, "cannot change task " + where);
        for (const std::string& detail : applyContent(handle, where, current, wanted))
            details.push_back(detail);
        _context.changes.add(Change::Kind::Changed, "task", fullName(wanted.name), details);
    }

    // Outcomes and settings.
    static std::vector<std::string> applyContent(const TaskHandle& handle, const std::string& where,
                                                 const Task& current, const Task& wanted) {
        std::vector<std::string> details = applyOutcomes(handle, where, current, wanted);
        if (current.setting == wanted.setting) return details;
        _ZxPolTaskAttr attr{};
        int result = ZXPOL_S_OK;
        zxpol_getTaskAttrib(handle.get(), &attr, &result);
        const KeyHandle setting(attr.setting);
        require(result, "cannot open the settings of task " + where);
        for (const std::string& detail : applySetting(setting.get(), "task " + where, current.setting, wanted.setting))
            details.push_back(detail);
        return details;
    }

    ApplyContext& _context;
    const RuleHandle& _rule;
    const std::string& _path;
};

}  // namespace

void applyTasks(ApplyContext& context, const RuleHandle& rule, const std::string& path, const Rule& current,
                const Rule& wanted) {
    TaskApplier(context, rule, path).run(current, wanted);
}

}  // namespace tool
