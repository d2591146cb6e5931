#include "match/task_collection.h"

#include <utility>

#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "store/store_key.h"
#include "store/store_value.h"

using namespace zxpol;

// ---- exclusive filters ------------------------------------------------------------------------------------

namespace zxpol {

ExcluTable readExcluTable(ZxPolRuleHive& hive) {
    ExcluTable table;
    for (uint32_t valueIndex = 0;;) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        int result = ZXPOL_S_OK;
        hive._nextExclusiveFilterType(&valueIndex, &filter, &type, &result);
        if (failed(result)) return table;
        table.emplace(filter, _ExcluFilterField{type, _ExcluFilterField::l_end});
    }
}

namespace {

TaskList::iterator append(TaskList& tasks, _TaskListEntry entry) {
    return tasks.insert(tasks.end(), std::move(entry));
}

}  // namespace

void pushTask(TaskList& tasks, ExcluTable& table, _TaskListEntry entry, uint32_t filter) {
    const auto found = table.find(filter);
    if (found == table.end()) {
        ZXPOL_DEBUG(2, "Pushing task %s", entry.path.c_str());
        append(tasks, std::move(entry));
        return;
    }
    _ExcluFilterField& field = found->second;
    const bool isHeld = field.position != _ExcluFilterField::l_end;
    if (field.type == ZXPOL_FILTER_DESC_EXCLUSIVE) {
        if (isHeld) {
            ZXPOL_DEBUG(2, "Erasing previous DESC-exclusive task %s", (*field.position)->path.c_str());
            tasks.erase(*field.position);
            field.position = _ExcluFilterField::l_end;
        }
        ZXPOL_DEBUG(2, "Pushing DESC-exclusive task %s", entry.path.c_str());
        field.position = append(tasks, std::move(entry));
    } else if (field.type == ZXPOL_FILTER_ASC_EXCLUSIVE && !isHeld) {
        ZXPOL_DEBUG(2, "Pushing ASC-exclusive task %s", entry.path.c_str());
        field.position = append(tasks, std::move(entry));
    } else {
        ZXPOL_DEBUG(2, "Ignoring ASC-exclusive task %s", entry.path.c_str());
    }
}

}  // namespace zxpol

void ZxPolRuleMatcher::_resetExcluTable() {
    for (auto& [filter, field] : _excluTable)
        field.position = _ExcluFilterField::l_end;
}

// ---- the tasks of one rule --------------------------------------------------------------------------------

namespace {

// What decides about a task.
struct TaskFlags {
    uint32_t filter;
    int32_t enable;
    int32_t overridable;
};

// A filter type that is not exclusive.
uint32_t ordinaryFilter(const ExcluTable& table) {
    uint32_t filter = UINT32_MAX;
    while (table.find(filter) != table.end())
        --filter;
    return filter;
}

// Reads what decides about a task. What cannot be read stays as it is set here: the task is on, cannot be switched
// off from below, and no other task keeps it out.
TaskFlags readFlags(ZxPolTask& task, const ExcluTable& table, int* error) {
    _ZxPolTaskAttr attr{};
    attr.filter = ordinaryFilter(table);
    attr.enable = 1;
    attr.overridable = 0;
    task.getAttribute(&attr, error);
    const StoreKey setting(attr.setting);
    return {attr.filter, attr.enable, attr.overridable};
}

// Whether no mark switches the task off in `rule`. A failure is of no consequence beside the answer.
bool isActive(ZxPolRule& rule, const std::string& path) {
    int ignored = ZXPOL_S_OK;
    return rule.isTaskActive(path.c_str(), &ignored, nullptr);
}

std::string fullName(const char* rulePath, const char* taskName) {
    std::string name = rulePath;
    if (name.empty() || name.back() != '\\') name += '\\';
    return name += taskName;
}

}  // namespace

void ZxPolRuleMatcher::getTasksInRule(ZxPolRule* matchedRule, const char* rulePath, TaskList& tasks, int* error) {
    if (error == nullptr) return;
    const std::unique_ptr<ZxPolRule> ownRule(_ruleHive->openRuleByFullPath(rulePath, error));
    if (failed(*error)) return;
    for (uint32_t index = 0; _collectTask(*matchedRule, *ownRule, rulePath, index, tasks, error);)
        ++index;
}

// Collects the `index`-th task of `ownRule` if it applies; false when there is none, or on failure.
bool ZxPolRuleMatcher::_collectTask(ZxPolRule& matchedRule, ZxPolRule& ownRule, const char* rulePath, uint32_t index,
                                    TaskList& tasks, int* error) {
    char name[kNameSize];
    uint32_t size = sizeof name;
    ownRule.enumTask(index, name, &size, error);
    if (failed(*error)) {
        // A rule need not have tasks, nor a place for them.
        if (isEnd(*error) || hasReason(*error, kReasonNotFound)) *error = ZXPOL_S_OK;
        return false;
    }
    _TaskListEntry entry{std::unique_ptr<ZxPolTask>(ownRule.openTask(name, error)), fullName(rulePath, name)};
    if (failed(*error)) return false;
    const TaskFlags flags = readFlags(*entry.task, _excluTable, error);
    if (failed(*error)) return false;
    const char* path = entry.path.c_str();
    ZXPOL_DEBUG(2, "task %s, enable:%d, overridable:%d, filterType:%08X", path, flags.enable, flags.overridable,
                static_cast<unsigned>(flags.filter));
    if (flags.enable == 0 || !isActive(flags.overridable == 0 ? ownRule : matchedRule, entry.path)) {
        ZXPOL_DEBUG(2, "Ignoring task %s", path);
        return true;
    }
    pushTask(tasks, _excluTable, std::move(entry), flags.filter);
    return true;
}
