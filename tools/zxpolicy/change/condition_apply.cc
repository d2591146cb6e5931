#include <algorithm>

#include "change/apply_context.h"
#include "output/text.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

// Conditions as the interface takes them: records, and an array of pointers to them closed by a null pointer.
class ConditionArray {
public:
    explicit ConditionArray(const std::vector<Condition>& conditions) : _pairs(conditions.size()) {
        for (size_t i = 0; i < conditions.size(); ++i) {
            copyText(_pairs[i].sender, conditions[i].sender);
            copyText(_pairs[i].receiver, conditions[i].receiver);
            _pointers.push_back(reinterpret_cast<const unsigned char*>(&_pairs[i]));
        }
        _pointers.push_back(nullptr);
    }
    const unsigned char** get() { return _pointers.data(); }

private:
    std::vector<_ZxPolAddrPairCond> _pairs;
    std::vector<const unsigned char*> _pointers;
};

std::string describe(const Condition& condition) {
    return "condition {sender: " + inQuotes(condition.sender) + ", receiver: " + inQuotes(condition.receiver) + "}";
}

int replaceConditions(const RuleHandle& rule, const std::vector<Condition>& conditions) {
    ConditionArray array(conditions);
    int result = ZXPOL_S_OK;
    zxpol_updateConditionEx(rule.get(), nullptr, array.get(), ZXPOL_COND_CHECK_NONE, nullptr, &result);
    return result;
}

// Removes what the store has, one by one: also what stands behind a gap in the numbering.
void removeAll(const RuleHandle& rule, const std::string& where) {
    for (const Condition& condition : readStoredConditions(rule, where)) {
        ConditionArray array({condition});
        int result = ZXPOL_S_OK;
        zxpol_removeConditionEx(rule.get(), array.get(), ZXPOL_COND_CHECK_NONE, nullptr, &result);
        require(result, "cannot remove a condition of rule " + where);
    }
}

// Finds the condition that was refused, and fails with its place.
[[noreturn]] void failForMalformed(const ApplyContext& context, const RuleHandle& rule, const std::string& where,
                                   const std::vector<Condition>& conditions, int failure) {
    for (const Condition& condition : conditions) {
        ConditionArray array({condition});
        int result = ZXPOL_S_OK;
        zxpol_addCondition(rule.get(), array.get()[0], &result);
        if (ZX_FAILURE(result))
            throw StoreError(
                context.source.at(condition.place) + ": cannot set " + describe(condition) + " of rule " + where,
                result);
    }
    throw StoreError("cannot set the conditions of rule " + where, failure);
}

void writeConditions(const ApplyContext& context, const RuleHandle& rule, const std::string& where,
                     const std::vector<Condition>& wanted) {
    const int result = replaceConditions(rule, wanted);
    if (ZX_FAILURE(result)) failForMalformed(context, rule, where, wanted, result);
    if (readStoredConditions(rule, where) == wanted) return;
    removeAll(rule, where);
    require(replaceConditions(rule, wanted), "cannot set the conditions of rule " + where);
}

size_t countMissing(const std::vector<Condition>& in, const std::vector<Condition>& from) {
    return static_cast<size_t>(std::count_if(in.begin(), in.end(), [&](const Condition& condition) {
        return std::find(from.begin(), from.end(), condition) == from.end();
    }));
}

// Whether conditions of the parent cover all of these, which the rule has already: adding them once more with the check
// against the parent writes nothing.
bool areCovered(const RuleHandle& rule, const std::string& where, const std::vector<Condition>& conditions) {
    ConditionArray array(conditions);
    int result = ZXPOL_S_OK;
    zxpol_addConditionEx(rule.get(), array.get(), ZXPOL_COND_CHECK_HIERARCHY, nullptr, &result);
    if (result != ZXPOL_E_CONDITION_CHECK) require(result, "cannot check the conditions of rule " + where);
    return result != ZXPOL_E_CONDITION_CHECK;
}

void warnOfRule(ApplyContext& context, const RuleHandle& rule, const std::string& where, const Rule& wanted) {
    if (areCovered(rule, where, wanted.conditions)) return;
    for (const Condition& condition : wanted.conditions)
        if (!areCovered(rule, where, {condition}))
            context.warnings.push_back(context.source.at(condition.place) + ": " + describe(condition) + " of rule " +
                                       where + " is not covered by a condition of its parent");
}

void warnBelow(ApplyContext& context, const RuleHandle& rule, const std::string& path, const Rule& wanted) {
    for (const Rule& child : wanted.rules) {
        const std::string childPath = childName(path, child.name);
        int result = ZXPOL_S_OK;
        const RuleHandle handle(zxpol_openRule(rule.get(), child.name.c_str(), &result));
        require(result, "cannot open rule " + oneLine(childPath));
        const bool canBeChecked = wanted.matchType == 0 && child.matchType == 0 && !child.conditions.empty();
        if (canBeChecked) warnOfRule(context, handle, oneLine(childPath), child);
        warnBelow(context, handle, childPath, child);
    }
}

}  // namespace

std::vector<std::string> applyConditions(ApplyContext& context, const RuleHandle& rule, const std::string& path,
                                         const Rule& current, const Rule& wanted) {
    std::vector<std::string> details;
    if (current.conditions == wanted.conditions) return details;
    writeConditions(context, rule, oneLine(path), wanted.conditions);
    countChanges(details, "conditions", countMissing(wanted.conditions, current.conditions),
                 countMissing(current.conditions, wanted.conditions));
    if (details.empty()) details.emplace_back("conditions: another order or number");
    return details;
}

void warnOfUncovered(ApplyContext& context, const RuleHandle& root, const Rule& wanted) {
    warnBelow(context, root, "\\", wanted);
}

}  // namespace tool
