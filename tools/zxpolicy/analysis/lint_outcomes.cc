// What outcomes of tasks name.
#include <set>

#include "analysis/lint_tasks.h"
#include "output/text.h"
#include "stored/classification_store_reader.h"
#include "stored/raw_key.h"

namespace tool {

void lintOutcomes(const LintedTasks& tasks) {
    const std::vector<std::string> names = readClassificationNames(tasks.store());
    const std::set<std::string> known(names.begin(), names.end());
    for (const TaskFacts& task : tasks.tasks()) {
        const std::string own = task.name.substr(task.name.rfind('\\') + 1);
        const KeyHandle outcomes =
            openRawKey(tasks.store().key(), tasks.rules()[task.rule].key + "\\tasks\\" + own + "\\Classification");
        if (!outcomes) continue;
        for (const RawValue& value : rawValues(outcomes.get())) {
            if (!isText(value) || known.count(textOf(value)) != 0) continue;
            tasks.add(Severity::Warning, "missing-classification", "task " + oneLine(task.name),
                      "its outcome " + inQuotes(value.name) + " names " + inQuotes(textOf(value)) +
                          ", and there is no such classification",
                      "make the classification, or correct the outcome; letter case counts", {tasks.path(task.rule)});
        }
    }
}

}  // namespace tool
