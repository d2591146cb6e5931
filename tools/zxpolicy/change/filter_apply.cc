#include "change/apply_context.h"
#include "difference/attribute_differences.h"
#include "tool_error.h"

namespace tool {

void applyExclusiveFilters(ApplyContext& context, const RuleHiveHandle& hive, const Policy& current,
                           const Policy& wanted) {
    for (const auto& [filter, priority] : current.exclusiveFilters) {
        if (wanted.exclusiveFilters.count(filter) != 0) continue;
        int result = ZXPOL_S_OK;
        zxpol_removeExclusiveFilterType(hive.get(), filter, &result);
        require(result, "cannot remove exclusive filter " + std::to_string(filter));
        context.changes.add(Change::Kind::Deleted, "exclusive filter", std::to_string(filter));
    }
    for (const auto& [filter, priority] : wanted.exclusiveFilters) {
        const auto found = current.exclusiveFilters.find(filter);
        const bool isNew = found == current.exclusiveFilters.end();
        if (!isNew && found->second == priority) continue;
        int result = ZXPOL_S_OK;
        zxpol_setExclusiveFilterType(hive.get(), filter, static_cast<ZxPolFilterPriorityType>(priority), &result);
        require(result, "cannot set exclusive filter " + std::to_string(filter));
        if (isNew)
            context.changes.add(Change::Kind::Created, "exclusive filter", std::to_string(filter));
        else
            context.changes.add(Change::Kind::Changed, "exclusive filter", std::to_string(filter),
                                attributeDifferences(found->second, priority));
    }
}

}  // namespace tool
