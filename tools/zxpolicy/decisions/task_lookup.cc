#include "decisions/task_lookup.h"

#include <memory>

#include "stored/rule_tasks.h"

namespace tool {

TaskLookup lookupTasks(const Store& store) {
    return [tasks = std::make_shared<const RuleTasks>(store)](const std::string& rulePath) {
        return tasks->namesOf(rulePath);
    };
}

}  // namespace tool
