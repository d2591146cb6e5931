#include "stored/policy_store_reader.h"

#include <algorithm>
#include <cstring>

#include "output/text.h"
#include "policy/policy_faults.h"
#include "result_names.h"
#include "stored/classification_store_reader.h"
#include "stored/list_store_reader.h"
#include "stored/names_of.h"
#include "stored/raw_key.h"
#include "stored/setting_store_reader.h"
#include "stored/snapshot.h"
#include "stored/store_audit.h"
#include "tool_error.h"

namespace tool {

namespace {

// The values are read from the store itself: the library passes over most of those that it cannot read.
Task readTask(const RuleHandle& rule, const KeyHandle& tasks, const std::string& name, const std::string& fullName) {
    const std::string where = "task " + oneLine(fullName);
    int result = ZXPOL_S_OK;
    const TaskHandle handle(zxpol_openTask(rule.get(), name.c_str(), &result));
    require(result, "cannot read " + where);
    const KeyHandle key = openRawKey(tasks.get(), name);
    Task task;
    task.name = name;
    task.displayName = rawText(key.get(), "displayName", where);
    task.comment = rawText(key.get(), "comment", where);
    task.filter = rawNumber(key.get(), "filter", where);
    task.enable = rawNumber(key.get(), "enable", where) != 0;
    task.overridable = rawNumber(key.get(), "overridable", where) != 0;
    task.outcomes = readStoredOutcomes(handle, oneLine(fullName));
    task.setting = readStoredSetting(openRawKey(key.get(), "setting").get());
    return task;
}

Rule readRule(const Store& store, const RuleHandle& handle, const std::string& path, const std::string& key) {
    const std::string where = "rule " + oneLine(path);
    const KeyHandle ruleKey = openRawKey(store.key(), key);
    Rule rule;
    rule.displayName = rawText(ruleKey.get(), "displayName", where);
    rule.comment = rawText(ruleKey.get(), "comment", where);
    rule.matchType = static_cast<int32_t>(rawNumber(ruleKey.get(), "matchType", where));
    rule.conditions = readAllConditions(handle, ruleKey, oneLine(path));
    rule.inactive = readInactiveMarks(store, key);
    const KeyHandle tasks = openRawKey(ruleKey.get(), "tasks");
    for (const std::string& name : allNamesOf(zxpol_enumTask, handle.get(), tasks, "the tasks of " + where))
        rule.tasks.push_back(readTask(handle, tasks, name, childName(path, name)));
    const KeyHandle rules = openRawKey(ruleKey.get(), "rules");
    for (const std::string& name : allNamesOf(zxpol_enumRule, handle.get(), rules, "the rules below " + where)) {
        int result = ZXPOL_S_OK;
        const RuleHandle child(zxpol_openRule(handle.get(), name.c_str(), &result));
        require(result, "cannot open rule " + oneLine(childName(path, name)));
        rule.rules.push_back(readRule(store, child, childName(path, name), childRuleKey(key, name)));
        rule.rules.back().name = name;
    }
    return rule;
}

void readExclusiveFilters(const RuleHiveHandle& hive, Policy& policy) {
    for (uint32_t index = 0;; ++index) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        int result = ZXPOL_S_OK;
        zxpol_enumExclusiveFilterType(hive.get(), index, &filter, &type, &result);
        if (hasReason(result, kReasonEnd)) return;
        require(result, "cannot read the exclusive filters");
        policy.exclusiveFilters.emplace(
            filter, type == ZXPOL_FILTER_ASC_EXCLUSIVE ? FilterPriority::Ascending : FilterPriority::Descending);
    }
}

std::map<std::string, AddressList> namedLists(const Store& store) {
    std::map<std::string, AddressList> lists;
    for (const std::string& name : readListNames(store))
        lists.emplace(name, NormalList{});
    return lists;
}

}  // namespace

std::string childRuleKey(const std::string& ruleKey, const std::string& name) {
    return ruleKey + "\\rules\\" + name;
}

std::vector<InactiveMark> readInactiveMarks(const Store& store, const std::string& ruleKey) {
    std::vector<InactiveMark> marks;
    const KeyHandle key = openRawKey(store.key(), ruleKey + "\\inactive");
    if (!key) return marks;
    for (const RawValue& value : rawValues(key.get()))
        marks.push_back({textOf(value), {}});
    return marks;
}

std::vector<Condition> readStoredConditions(const RuleHandle& rule, const std::string& where) {
    std::vector<Condition> conditions;
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        zxpol_enumCondition(rule.get(), index, reinterpret_cast<unsigned char*>(&pair), &size, &result);
        if (hasReason(result, kReasonEnd)) return conditions;
        require(result, "cannot read the conditions of rule " + where);
        conditions.push_back({pair.sender, pair.receiver, {}});
    }
}

std::vector<Condition> readAllConditions(const RuleHandle& rule, const KeyHandle& key, const std::string& where) {
    const std::vector<std::string> names = rawValueNames(key.get());
    const auto stored = static_cast<size_t>(std::count_if(
        names.begin(), names.end(), [](const std::string& name) { return isNumbered(name, "condition"); }));
    std::vector<Condition> conditions;
    if (rawNumber(key.get(), "matchType", "rule " + where) == 0) conditions = readStoredConditions(rule, where);
    if (conditions.size() != stored)
        throw StoreError("cannot read all of the conditions of rule " + where + ": " + grouped(stored) +
                             " are stored, and " + grouped(conditions.size()) + " can be read",
                         ZXPOL_E_NO_MORE_ITEMS);
    return conditions;
}

std::map<std::string, OutcomeText> readStoredOutcomes(const TaskHandle& handle, const std::string& where) {
    std::map<std::string, OutcomeText> outcomes;
    std::string value(1024, '\0');
    for (uint32_t index = 0;;) {
        char name[ZXPOL_NAME_SIZE];
        uint32_t nameSize = sizeof name;
        auto valueSize = static_cast<uint32_t>(value.size());
        int result = ZXPOL_S_OK;
        zxpol_enumOutcome(handle.get(), index, name, &nameSize, value.data(), &valueSize, &result);
        if (hasReason(result, kReasonEnd)) return outcomes;
        if (hasReason(result, kReasonTooSmall) && valueSize > value.size()) {
            value.resize(valueSize);
            continue;
        }
        require(result, "cannot read the outcomes of task " + where);
        // A value of another type may have no NUL.
        outcomes.emplace(name, OutcomeText{std::string(value.data(), strnlen(value.data(), valueSize)), {}});
        ++index;
    }
}

StoredPolicy readStoredPolicy(const Store& store, Secrets secrets, ListParts parts) {
    StoredPolicy stored;
    stored.problems = auditStore(store.key(), parts);
    if (!stored.problems.empty()) return stored;

    int result = ZXPOL_S_OK;
    const RuleHiveHandle rules(zxpol_openRuleHive(store.key(), 0, &result));
    const RuleHandle root(zxpol_openRootRule(rules.get(), &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
    stored.policy.lists = parts == ListParts::All ? readStoredLists(store, secrets) : namedLists(store);
    stored.policy.classifications = readStoredClassifications(store);
    readExclusiveFilters(rules, stored.policy);
    stored.policy.root = readRule(store, root, "\\", kRootRuleKey);
    stored.problems = policyFaults(stored.policy);
    return stored;
}

StoredPolicy readPolicySnapshot(const Store& store, Secrets secrets, ListParts parts) {
    return readAtOneMoment(store, [&] { return readStoredPolicy(store, secrets, parts); });
}

void requireNoProblems(const std::vector<std::string>& problems, const std::string& what) {
    if (problems.empty()) return;
    const std::string others =
        problems.size() == 1 ? "" : " (and " + std::to_string(problems.size() - 1) + " more such things)";
    throw PolicyError(what + ": " + problems.front() + others + "; correct it with the program that wrote it");
}

}  // namespace tool
