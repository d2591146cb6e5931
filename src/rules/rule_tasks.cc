// The tasks of a rule, and the marks that switch tasks off for it.
#include <algorithm>
#include <cstring>
#include <utility>

#include "rules/rule.h"
#include "store/multi_value.h"
#include "store/store_value.h"
#include "store/update.h"
#include "zxbase.h"

using namespace zxpol;

namespace {

constexpr const char* kMarksKey = "inactive";
constexpr const char* kMarkValue = "inactive";
constexpr uint32_t kLoadedMarkSize = 1024;

bool isFullName(const char* taskFullName) {
    return taskFullName != nullptr && *taskFullName != '\0' && isTerminated(taskFullName, ZXPOL_NAME_SIZE);
}

// The length of a name without one trailing backslash.
size_t significantLength(const char* name) {
    const size_t length = std::strlen(name);
    return length != 0 && name[length - 1] == '\\' ? length - 1 : length;
}

// Whether two full names of tasks are the same but for letter case and, where only one of them has it, a trailing
// backslash.
bool areSameTask(const char* a, const char* b) {
    if (kr_stricmp(a, b) == 0) return true;
    const size_t length = significantLength(a);
    const bool hasOneBackslash = (a[length] == '\\') != (b[significantLength(b)] == '\\');
    return hasOneBackslash && length == significantLength(b) && kr_strnicmp(a, b, length) == 0;
}

// Looks among the marks for that of a task and copies the name of its value to `valueName` and its text to `mark` (256
// bytes each; `mark` may be null). False with success when there is none. The buffers are out of the way of walks down
// the tree.
__attribute__((noinline)) bool findMark(_ZxPolComHandle* marks, const char* taskFullName, char* valueName, char* mark,
                                        int* error) {
    ZxPolMultiValue names(marks, kMarkValue);
    char text[ZXPOL_NAME_SIZE];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = kNameSize;
        names.enumValueName(index, valueName, &size, error);
        if (failed(*error)) break;
        readText(marks, valueName, text, error);
        if (failed(*error)) return false;
        if (areSameTask(text, taskFullName)) break;
    }
    const bool isFound = succeeded(*error);
    if (isFound && mark != nullptr) std::memcpy(mark, text, sizeof text);
    // Names that could not be read to their end are not all there are: the mark may be behind them.
    if (isFound || isEnd(*error)) *error = isFound ? ZXPOL_S_OK : names.result();
    return isFound;
}

}  // namespace

// ---- tasks ----------------------------------------------------------------------------------------------

ZxPolTask* ZxPolRule::createTask(const char* taskName, const _ZxPolTaskAttr* attr, int* error) {
    if (error == nullptr) return nullptr;
    if (taskName == nullptr || !ZxPolTask::isValidAttribute(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    // The one field that comes back in a record to read.
    auto* order = const_cast<uint32_t*>(&attr->order);
    return inUpdate(_key.get(), error,
                    [&]() -> std::unique_ptr<ZxPolTask> {
                        StoreKey taskKey(_tasks.createChild(taskName, error, order));
                        if (failed(*error) || !taskKey) return nullptr;
                        auto task = std::make_unique<ZxPolTask>(std::move(taskKey));
                        task->setAttribute(attr, error);
                        if (*error == ZXPOL_E_NOT_SUPPORTED) {
                            *error = ZXPOL_S_OK;
                            return task;
                        }
                        if (failed(*error)) return nullptr;
                        task->makeSetting();
                        return task;
                    })
        .release();
}

ZxPolTask* ZxPolRule::openTask(const char* taskName, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey taskKey(_tasks.openChild(taskName, error));
    if (failed(*error) || !taskKey) return nullptr;
    return std::make_unique<ZxPolTask>(std::move(taskKey)).release();
}

void ZxPolRule::deleteTask(const char* taskName, int* error) {
    if (error == nullptr) return;
    if (taskName == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_key.get(), error, [&] {
        _tasks.deleteChild(taskName, error);
        if (failed(*error)) return;
        const std::string fullName = _name + '\\' + taskName;
        _deleteRefedTasks(*this, fullName.c_str(), error);
    });
}

// Removes every mark for a task from `rule` and all rules below it. The walk keeps its own frames small: trees
// may be deep.
void ZxPolRule::_deleteRefedTasks(ZxPolRule& rule, const char* taskFullName, int* error) {
    while (rule._removeMark(taskFullName, error)) {
    }
    if (failed(*error)) return;
    for (uint32_t index = 0;; ++index) {
        const std::unique_ptr<ZxPolRule> child = rule._openChildAt(index, error);
        if (child == nullptr) return;
        _deleteRefedTasks(*child, taskFullName, error);
        if (failed(*error)) return;
    }
}

void ZxPolRule::enumTask(uint32_t index, char* buffer, uint32_t* size, int* error) {
    _tasks.enumChildByOrder(index, buffer, size, error);
}

void ZxPolRule::setTaskOrder(const char* taskName, uint32_t position, int* error) {
    _tasks.setChildOrder(taskName, position, error);
}

// ---- marks ----------------------------------------------------------------------------------------------

bool ZxPolRule::isTaskActive(const char* taskFullName, int* error, char* valueName) {
    return isTaskActive(taskFullName, error, valueName, nullptr);
}

bool ZxPolRule::isTaskActive(const char* taskFullName, int* error, char* valueName, char* mark) {
    if (error == nullptr) return false;
    if (!isFullName(taskFullName)) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    const StoreKey marks = StoreKey::open(_key.get(), kMarksKey, error);
    if (!marks) return true;
    char found[kNameSize];
    if (!findMark(marks.get(), taskFullName, found, mark, error)) return true;
    if (valueName != nullptr) std::memcpy(valueName, found, sizeof found);
    return false;
}

void ZxPolRule::inactivateTask(const char* taskFullName, int* error, int activate) {
    if (error == nullptr) return;
    inUpdate(_key.get(), error, [&] {
        if (activate == 1) {
            _removeMark(taskFullName, error);
        } else {
            _addMark(taskFullName, error);
        }
    });
}

// Makes a mark unless there is one.
void ZxPolRule::_addMark(const char* taskFullName, int* error) {
    const StoreKey marks = StoreKey::open(_key.get(), kMarksKey, error);
    if (!marks || !isTaskActive(taskFullName, error, nullptr) || failed(*error)) return;
    char valueName[kNameSize];
    uint32_t size = sizeof valueName;
    ZxPolMultiValue(marks.get(), kMarkValue).createValueName(valueName, &size, error);
    if (succeeded(*error)) writeText(marks.get(), valueName, taskFullName, error);
}

// Deletes one mark for a task, if there is one, and tells whether it did.
__attribute__((noinline)) bool ZxPolRule::_removeMark(const char* taskFullName, int* error) {
    const StoreKey marks = StoreKey::open(_key.get(), kMarksKey, error);
    char valueName[kNameSize];
    if (!marks || isTaskActive(taskFullName, error, valueName) || failed(*error)) return false;
    ZxPolMultiValue(marks.get(), kMarkValue).deleteValueName(valueName, error);
    return succeeded(*error);
}

// Not inlined into the constructor, which runs for every rule that a walk visits.
__attribute__((noinline)) void ZxPolRule::loadInactiveTasks() {
    int result = ZXPOL_S_OK;
    const StoreKey marks = StoreKey::open(_key.get(), kMarksKey, &result);
    if (!marks) return;
    char name[kNameSize];
    char text[kLoadedMarkSize];
    for (uint32_t index = 0;; ++index) {
        uint32_t nameSize = sizeof name;
        uint32_t size = sizeof text;
        enumValue(marks.get(), index, name, &nameSize, nullptr, text, &size, &result);
        if (failed(result)) return;
        _inactiveTasks.emplace_back(text, strnlen(text, std::min(size, kLoadedMarkSize)));
    }
}

void ZxPolRule::cleanInactiveTasks() {
    _inactiveTasks.clear();
}
