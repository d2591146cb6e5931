#include "match/task_collection.h"

#include <utility>

#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "rules/child_walk.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "store/store_key.h"
#include "store/store_value.h"

using namespace zxpol;

// ---- exclusive filters ------------------------------------------------------------------------------------

namespace zxpol {

ExcluTable readExcluTable(ZxPolRuleHive& hive, int* result) {
    ExcluTable table;
    for (uint32_t valueIndex = 0;;) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        int ended = ZXPOL_S_OK;
        hive._nextExclusiveFilterType(&valueIndex, &filter, &type, &ended);
        if (failed(ended)) {
            if (result != nullptr) *result = ended;
            return table;
        }
        table.emplace(filter, _ExcluFilterField{type, _ExcluFilterField::l_end});
    }
}

namespace {

TaskList::iterator append(TaskList& tasks, _TaskListEntry entry) {
    return tasks.insert(tasks.end(), std::move(entry));
}

}  // namespace

Admission admissionOf(ExcluTable& table, uint32_t filter) {
    const auto found = table.find(filter);
    if (found == table.end()) return {ZXPOL_FATE_TAKEN, nullptr};
    _ExcluFilterField& field = found->second;
    const bool isHeld = field.position != _ExcluFilterField::l_end;
    if (field.type == ZXPOL_FILTER_DESC_EXCLUSIVE) return {isHeld ? ZXPOL_FATE_REPLACES : ZXPOL_FATE_TAKEN, &field};
    const bool isFree = field.type == ZXPOL_FILTER_ASC_EXCLUSIVE && !isHeld;
    return {isFree ? ZXPOL_FATE_TAKEN : ZXPOL_FATE_HELD, &field};
}

void pushTask(TaskList& tasks, const Admission& admission, _TaskListEntry entry) {
    if (admission.fate == ZXPOL_FATE_HELD) {
        ZXPOL_DEBUG(2, "Ignoring ASC-exclusive task %s", entry.path.c_str());
        return;
    }
    if (admission.field == nullptr) {
        ZXPOL_DEBUG(2, "Pushing task %s", entry.path.c_str());
        append(tasks, std::move(entry));
        return;
    }
    _ExcluFilterField& field = *admission.field;
    if (admission.fate == ZXPOL_FATE_REPLACES) {
        ZXPOL_DEBUG(2, "Erasing previous DESC-exclusive task %s", admission.holder());
        tasks.erase(*field.position);
        field.position = _ExcluFilterField::l_end;
    }
    ZXPOL_DEBUG(2, "Pushing %s-exclusive task %s", field.type == ZXPOL_FILTER_DESC_EXCLUSIVE ? "DESC" : "ASC",
                entry.path.c_str());
    field.position = append(tasks, std::move(entry));
}

void pushTask(TaskList& tasks, ExcluTable& table, _TaskListEntry entry, uint32_t filter) {
    pushTask(tasks, admissionOf(table, filter), std::move(entry));
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

// Whether no mark switches the task off in `rule`; else the mark's text goes to `mark` (256 bytes). A failure is of no
// consequence beside the answer.
bool ZxPolRuleMatcher::_isActive(ZxPolRule& rule, const std::string& taskPath, char* mark) const {
    int ignored = ZXPOL_S_OK;
    const bool isActive = rule.isTaskActive(taskPath.c_str(), &ignored, nullptr, mark);
    // A rule need not have a place for marks.
    if (isActive && failed(ignored) && !hasReason(ignored, kReasonNotFound)) _tellPassedOver(pathOf(rule), ignored);
    return isActive;
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
    const auto describe = [&](_ZxPolMatchStep& step, ZxPolMatchFate fate) {
        step.rulePath = pathOf(matchedRule);
        step.taskPath = path;
        step.filter = flags.filter;
        step.enable = flags.enable;
        step.overridable = flags.overridable;
        step.fate = fate;
    };
    ZxPolRule& deciding = flags.overridable == 0 ? ownRule : matchedRule;
    char mark[ZXPOL_NAME_SIZE] = "";
    if (flags.enable == 0 || !_isActive(deciding, entry.path, mark)) {
        ZXPOL_DEBUG(2, "Ignoring task %s", path);
        _tell(ZXPOL_STEP_TASK, [&](_ZxPolMatchStep& step) {
            describe(step, flags.enable == 0 ? ZXPOL_FATE_DISABLED : ZXPOL_FATE_INACTIVE);
            // A full name that is too long for a mark is switched off without one.
            if (*mark == '\0') return;
            step.mark = mark;
            step.markRule = pathOf(deciding);
        });
        return true;
    }
    const Admission admission = admissionOf(_excluTable, flags.filter);
    _tell(ZXPOL_STEP_TASK, [&](_ZxPolMatchStep& step) {
        describe(step, admission.fate);
        step.otherPath = admission.holder();
    });
    pushTask(tasks, admission, std::move(entry));
    return true;
}
