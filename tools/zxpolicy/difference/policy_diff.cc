#include "difference/policy_diff.h"

#include <algorithm>
#include <set>

#include "difference/attribute_differences.h"
#include "difference/list_diff.h"
#include "difference/order_plan.h"
#include "output/text.h"
#include "policy/policy_items.h"

namespace tool {

namespace {

using Details = std::vector<std::string>;

// Tells what becomes of siblings that have an order: `visit` gets each item that is in both, or null for the one that
// is not, and those that moved are logged.
template <class Item, class Visit>
void compareSiblings(const std::vector<Item>& before, const std::vector<Item>& after, Visit visit) {
    std::map<std::string, const Item*> old;
    for (const Item& item : before)
        old.emplace(item.name, &item);
    std::vector<std::string> names;
    names.reserve(after.size());
    for (const Item& item : after)
        names.push_back(item.name);
    const std::set<std::string> isKept(names.begin(), names.end());
    std::vector<std::string> keptNames;
    for (const Item& item : before) {
        if (isKept.count(item.name) != 0)
            keptNames.push_back(item.name);
        else
            visit(&item, nullptr, 0);
    }
    std::map<size_t, uint32_t> moves;
    for (const OrderStep& step : planOrder(keptNames, names))
        if (!step.isNew) moves.emplace(step.index, step.position);
    for (size_t i = 0; i < after.size(); ++i) {
        const auto found = old.find(after[i].name);
        visit(found == old.end() ? nullptr : found->second, &after[i], moves.count(i) != 0 ? moves[i] : 0);
    }
}

// What something new is compared with.
template <class Item>
const Item& orEmpty(const Item* item) {
    static const Item kEmpty{};
    return item == nullptr ? kEmpty : *item;
}

void compareSettings(Details& details, const Setting& before, const Setting& after) {
    for (const auto& [path, item] : before)
        if (after.count(path) == 0) details.push_back("deleted setting " + inQuotes(path, path.size()));
    for (const auto& [path, item] : after) {
        const auto found = before.find(path);
        const bool isNew = found == before.end();
        if (!isNew && found->second == item) continue;
        details.push_back("setting " + inQuotes(path, path.size()) + ": " +
                          (isNew ? "" : settingText(found->second) + " -> ") + settingText(item));
    }
}

// Adds one detail for each line that is in one of the two only.
void compareLines(Details& details, const std::string& what, const Details& before, const Details& after) {
    const std::set<std::string> old(before.begin(), before.end());
    const std::set<std::string> now(after.begin(), after.end());
    const std::string removed = "removed " + what + " ";
    const std::string added = "added " + what + " ";
    for (const std::string& line : before)
        if (now.count(line) == 0) details.push_back(removed + line);
    for (const std::string& line : after)
        if (old.count(line) == 0) details.push_back(added + line);
}

Details conditionLines(const Rule& rule) {
    Details lines;
    for (const Condition& condition : rule.conditions)
        lines.push_back(condition.sender + " -> " + condition.receiver);
    return lines;
}

void compareConditions(Details& details, const Rule& before, const Rule& after) {
    const size_t others = details.size();
    compareLines(details, "condition", conditionLines(before), conditionLines(after));
    if (details.size() == others && before.conditions != after.conditions)
        details.emplace_back("conditions: another order or number");
}

class PolicyComparer {
public:
    explicit PolicyComparer(size_t samples) : _samples(samples) {}

    PolicyDiff run(const Policy& before, const Policy& after) {
        compareLists(before.lists, after.lists, _samples, _diff);
        compareClassifications(before.classifications, after.classifications);
        compareFilters(before.exclusiveFilters, after.exclusiveFilters);
        compareRule(&before.root, after.root, "\\");
        return std::move(_diff);
    }

private:
    void log(Change::Kind kind, const std::string& what, const std::string& name, const Details& details = {}) {
        _diff.changes.add(kind, what, name, details);
    }
    // Logs what is new or changed, and nothing that is not.
    void logVersion(bool isNew, const std::string& what, const std::string& name, const Details& details) {
        if (isNew || !details.empty()) log(isNew ? Change::Kind::Created : Change::Kind::Changed, what, name, details);
    }
    void logMove(const std::string& what, const std::string& name, uint32_t position) {
        if (position != 0) log(Change::Kind::Moved, what, name, {"to position " + std::to_string(position)});
    }

    // ---- classifications and exclusive filters

    void compareClassifications(const std::vector<Classification>& before, const std::vector<Classification>& after) {
        const std::string what = "classification";
        compareSiblings(before, after, [&](const Classification* old, const Classification* now, uint32_t) {
            if (now == nullptr) return log(Change::Kind::Deleted, what, old->name);
            const Classification& base = orEmpty(old);
            logVersion(old == nullptr, what, now->name, attributeDifferences(base, *now));
            compareActions(now->name, base.actions, now->actions);
        });
    }

    void compareActions(const std::string& classification, const std::vector<Action>& before,
                        const std::vector<Action>& after) {
        const std::string what = "action";
        compareSiblings(before, after, [&](const Action* old, const Action* now, uint32_t position) {
            const std::string name = classification + "\\" + (now == nullptr ? old : now)->name;
            if (now == nullptr) return log(Change::Kind::Deleted, what, name);
            logMove(what, name, position);
            const Action& base = orEmpty(old);
            Details details = attributeDifferences(base, *now);
            compareSettings(details, base.setting, now->setting);
            logVersion(old == nullptr, what, name, details);
        });
    }

    using Filters = std::map<uint32_t, FilterPriority>;

    void compareFilters(const Filters& before, const Filters& after) {
        const std::string what = "exclusive filter";
        for (const auto& [filter, priority] : before)
            if (after.count(filter) == 0) log(Change::Kind::Deleted, what, std::to_string(filter));
        for (const auto& [filter, priority] : after) {
            const auto found = before.find(filter);
            if (found == before.end())
                log(Change::Kind::Created, what, std::to_string(filter),
                    {std::string("priority: ") + priorityWord(priority)});
            else
                logVersion(false, what, std::to_string(filter), attributeDifferences(found->second, priority));
        }
    }

    // ---- rules and tasks

    void compareRule(const Rule* before, const Rule& after, const std::string& path) {
        const Rule& base = orEmpty(before);
        Details details = attributeDifferences(base, after);
        compareConditions(details, base, after);
        compareLines(details, "inactive mark", markedTasks(base), markedTasks(after));
        logVersion(before == nullptr, "rule", path, details);
        compareTasks(path, base.tasks, after.tasks);
        compareRules(path, base.rules, after.rules);
    }

    void compareTasks(const std::string& path, const std::vector<Task>& before, const std::vector<Task>& after) {
        compareSiblings(before, after, [&](const Task* old, const Task* now, uint32_t position) {
            const std::string name = childName(path, (now == nullptr ? old : now)->name);
            if (now == nullptr) return log(Change::Kind::Deleted, "task", name);
            logMove("task", name, position);
            const Task& base = orEmpty(old);
            Details details = attributeDifferences(base, *now);
            for (const std::string& detail : outcomeDifferences(base, *now))
                details.push_back(detail);
            compareSettings(details, base.setting, now->setting);
            logVersion(old == nullptr, "task", name, details);
        });
    }

    void compareRules(const std::string& path, const std::vector<Rule>& before, const std::vector<Rule>& after) {
        compareSiblings(before, after, [&](const Rule* old, const Rule* now, uint32_t position) {
            const std::string name = childName(path, (now == nullptr ? old : now)->name);
            if (now == nullptr) return logDeletedRule(name, *old);
            logMove("rule", name, position);
            compareRule(old, *now, name);
        });
    }

    static void countBelow(const Rule& rule, size_t& rules, size_t& tasks) {
        tasks += rule.tasks.size();
        rules += rule.rules.size();
        for (const Rule& child : rule.rules)
            countBelow(child, rules, tasks);
    }

    void logDeletedRule(const std::string& path, const Rule& rule) {
        size_t rules = 0;
        size_t tasks = 0;
        countBelow(rule, rules, tasks);
        Details details;
        if (rules != 0) details.push_back("with rules below it: " + grouped(rules));
        if (tasks != 0) details.push_back("with tasks: " + grouped(tasks));
        log(Change::Kind::Deleted, "rule", path, details);
    }

    size_t _samples;
    PolicyDiff _diff;
};

}  // namespace

PolicyDiff differencesOf(const Policy& before, const Policy& after, size_t samples) {
    return PolicyComparer(samples).run(before, after);
}

}  // namespace tool
