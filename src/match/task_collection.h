// What the collection of a matched rule's tasks keeps: the tasks so far, and who holds which exclusive filter.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "rules/task.h"
#include "zxpolicy_explain.h"

class ZxPolRule;
class ZxPolRuleHive;

namespace zxpol {

// A collected task and its full name: the path of its rule, a backslash and its own name.
struct _TaskListEntry {
    std::unique_ptr<ZxPolTask> task;
    std::string path;
};

// Tasks in the order in which they are to be applied.
using TaskList = std::list<_TaskListEntry>;

// An exclusive filter type: which of its tasks survives, and which one holds it now.
struct _ExcluFilterField {
    using Position = std::optional<TaskList::iterator>;

    // No position: no task holds the filter.
    static constexpr std::nullopt_t l_end = std::nullopt;

    ZxPolFilterPriorityType type;
    Position position;
};

// The exclusive filter types by their numbers.
using ExcluTable = std::unordered_map<uint32_t, _ExcluFilterField>;

// Reads the exclusive filter types of a hive, up to the first failure, whatever it is. Of a type that is there twice
// the first counts. That failure goes to *result, where it is not null.
ExcluTable readExcluTable(ZxPolRuleHive& hive, int* result = nullptr);

// What is to become of a task by its filter.
struct Admission {
    ZxPolMatchFate fate;       // taken, replaces or held
    _ExcluFilterField* field;  // of the filter type; null for one that is not exclusive

    // The full name of the task that holds the filter; null when none does.
    const char* holder() const {
        return field != nullptr && field->position ? (*field->position)->path.c_str() : nullptr;
    }
};

Admission admissionOf(ExcluTable& table, uint32_t filter);

// Does with a task what its admission says.
void pushTask(TaskList& tasks, const Admission& admission, _TaskListEntry entry);

// Puts a task into the list, unless another task of its exclusive filter type keeps it out or is replaced by it.
void pushTask(TaskList& tasks, ExcluTable& table, _TaskListEntry entry, uint32_t filter);

}  // namespace zxpol
