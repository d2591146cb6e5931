// What the steps of an apply share.
#pragma once

#include <string>
#include <vector>

#include "difference/change_log.h"
#include "output/progress.h"
#include "policy/policy_file.h"
#include "stored/policy_store_reader.h"
#include "stored/store.h"

namespace tool {

struct ApplyContext {
    const Store& store;
    const YamlSource& source;
    ChangeLog changes;
    std::vector<std::string> warnings;
    Progress progress;
    std::string moved =
        {};  // the full name of what is to be moved rather than its siblings; empty where it is the same

    // The last name of that when it is one of the siblings below `path`, else the empty text.
    std::string movedBelow(const std::string& path) const {
        const std::string above = childName(path, "");
        const bool isBelow = moved.compare(0, above.size(), above) == 0;
        const std::string name = isBelow ? moved.substr(above.size()) : "";
        return name.find('\\') == std::string::npos ? name : "";
    }
};

// Each brings one part of the store from what it holds to what is wanted, and logs what it did. They run within an
// update of the store, and throw a ToolError when something fails: the caller takes everything back then.

void applyLists(ApplyContext& context, const ListHiveHandle& hive, const Policy& current, const Policy& wanted);
void applyExclusiveFilters(ApplyContext& context, const RuleHiveHandle& hive, const Policy& current,
                           const Policy& wanted);
void applyClassifications(ApplyContext& context, const Policy& current, const Policy& wanted);
// The root rule with all below it.
void applyRootRule(ApplyContext& context, const RuleHandle& root, const Rule& current, const Rule& wanted);
void applyTasks(ApplyContext& context, const RuleHandle& rule, const std::string& path, const Rule& current,
                const Rule& wanted);
// Returns what changed, as details of the rule's change.
std::vector<std::string> applyConditions(ApplyContext& context, const RuleHandle& rule, const std::string& path,
                                         const Rule& current, const Rule& wanted);
std::vector<std::string> applyInactiveMarks(ApplyContext& context, const RuleHandle& rule, const std::string& path,
                                            const std::string& ruleKey, const Rule& current, const Rule& wanted);
// Brings what is below a key "setting" from `current` to `wanted`. Returns what changed, as details of the change of
// the task or action; `where` names that in errors.
std::vector<std::string> applySetting(_ZxPolComHandle* key, const std::string& where, const Setting& current,
                                      const Setting& wanted);

// Warns of conditions below the root that no condition of the parent covers. Writes nothing.
void warnOfUncovered(ApplyContext& context, const RuleHandle& root, const Rule& wanted);

// All of these in their order.
void applyDifferences(ApplyContext& context, const Policy& current, const Policy& wanted);

// Reads the store back: what it holds now must be what was wanted, and nothing else. Throws a ToolError.
void requireStored(const Store& store, const Policy& wanted, Secrets secrets, ListParts parts);

// Copies a text that is known to fit into a field of a record.
template <size_t size>
void copyText(char (&field)[size], const std::string& text) {
    field[text.copy(field, size - 1)] = '\0';
}

}  // namespace tool
