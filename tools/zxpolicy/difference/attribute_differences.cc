#include "difference/attribute_differences.h"

#include "difference/change_log.h"
#include "output/text.h"
#include "policy/policy_check.h"

namespace tool {

namespace {

using Details = std::vector<std::string>;

template <class Before, class After>
void compareTexts(Details& details, const Before& before, const After& after) {
    compare(details, "displayName", before.displayName, after.displayName);
    compare(details, "comment", before.comment, after.comment);
}

void compareRest(Details& details, const DirectoryList& before, const DirectoryList& after) {
    compare(details, "server", before.server, after.server);
    compare(details, "port", before.port, after.port);
    compare(details, "searchroot", before.searchroot, after.searchroot);
    compare(details, "authentication", before.authentication, after.authentication);
    compare(details, "schematype", before.schematype, after.schematype);
    compare(details, "username", before.username, after.username);
    compare(details, "filter", before.filter, after.filter);
}

}  // namespace

Details attributeDifferences(const Rule& before, const Rule& after) {
    Details details;
    compareTexts(details, before, after);
    compare(details, "matchType", static_cast<uint32_t>(before.matchType), static_cast<uint32_t>(after.matchType));
    return details;
}

Details attributeDifferences(const Task& before, const Task& after) {
    Details details;
    compareTexts(details, before, after);
    compare(details, "filter", before.filter, after.filter);
    compare(details, "enable", before.enable, after.enable);
    compare(details, "overridable", before.overridable, after.overridable);
    return details;
}

Details attributeDifferences(const Classification& before, const Classification& after) {
    Details details;
    compareTexts(details, before, after);
    return details;
}

Details attributeDifferences(const Action& before, const Action& after) {
    Details details;
    compareTexts(details, before, after);
    compare(details, "actionType", before.actionType, after.actionType);
    return details;
}

Details attributeDifferences(const AddressList& before, const AddressList& after) {
    Details details;
    if (before.index() != after.index())
        details.emplace_back(std::holds_alternative<DirectoryList>(after) ? "type: normal -> directory"
                                                                          : "type: directory -> normal");
    std::visit([&](const auto& one, const auto& other) { compareTexts(details, one, other); }, before, after);
    const auto* directory = std::get_if<DirectoryList>(&before);
    const auto* other = std::get_if<DirectoryList>(&after);
    if (directory != nullptr && other != nullptr) compareRest(details, *directory, *other);
    return details;
}

Details attributeDifferences(FilterPriority before, FilterPriority after) {
    if (before == after) return {};
    return {std::string("priority: ") + priorityWord(before) + " -> " + priorityWord(after)};
}

Details outcomeDifferences(const Task& before, const Task& after) {
    Details details;
    for (const auto& [name, outcome] : before.outcomes)
        if (after.outcomes.count(name) == 0) details.push_back("deleted outcome " + inQuotes(name, kMaxName));
    for (const auto& [name, outcome] : after.outcomes) {
        const auto found = before.outcomes.find(name);
        const bool isNew = found == before.outcomes.end();
        if (!isNew && found->second == outcome) continue;
        details.push_back("outcome " + inQuotes(name, kMaxName) + ": " +
                          (isNew ? inQuotes(outcome.text) : differenceText(found->second.text, outcome.text)));
    }
    return details;
}

const char* priorityWord(FilterPriority priority) {
    return priority == FilterPriority::Ascending ? "asc" : "desc";
}

}  // namespace tool
