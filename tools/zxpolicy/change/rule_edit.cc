// The commands that change rules.
#include <algorithm>

#include "change/rule_commands.h"
#include "stored/policy_path.h"

namespace tool {

namespace {

std::string conditionText(const Condition& condition) {
    return "condition " + inQuotes(condition.sender + "," + condition.receiver, kMaxAddress);
}

// Letter case does not tell patterns apart, but it does the names of lists.
bool isSameSide(const std::string& side, const std::string& other) {
    if (side == other) return true;
    return side.front() != '(' && lowerCase(side) == lowerCase(other);
}

// The condition in this very spelling or, where there is none, one that is the same.
auto findCondition(std::vector<Condition>& conditions, const Condition& wanted) {
    const auto exact = std::find(conditions.begin(), conditions.end(), wanted);
    if (exact != conditions.end()) return exact;
    return std::find_if(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        return isSameSide(condition.sender, wanted.sender) && isSameSide(condition.receiver, wanted.receiver);
    });
}

// A sender holds no comma, so that the first one ends it. The library says which patterns are none.
Condition conditionFrom(const std::string& text) {
    const size_t comma = text.find(',');
    if (comma == std::string::npos)
        throw UsageError("the condition " + inQuotes(text, kMaxAddress) +
                         " has no comma; write SENDER,RECEIVER such as '(Partners),*@sales.example.com'");
    Condition condition{text.substr(0, comma), text.substr(comma + 1), {}};
    std::string fault = senderFault(condition.sender);
    if (!fault.empty()) throw UsageError("the sender of " + conditionText(condition) + " " + fault);
    fault = receiverFault(condition.receiver);
    if (!fault.empty()) throw UsageError("the receiver of " + conditionText(condition) + " " + fault);
    return condition;
}

void editConditions(Rule& rule, const RuleEditOptions& options) {
    for (const std::string& text : options.removedConditions) {
        const Condition condition = conditionFrom(text);
        const auto found = findCondition(rule.conditions, condition);
        if (found == rule.conditions.end()) failForMissing(conditionText(condition) + " of " + ruleText(options.path));
        rule.conditions.erase(found);
    }
    for (const std::string& text : options.conditions) {
        const Condition condition = conditionFrom(text);
        if (findCondition(rule.conditions, condition) == rule.conditions.end()) rule.conditions.push_back(condition);
    }
    if (rule.name.empty() && rule.conditions.empty())
        throw UsageError("the root rule needs a condition; \"*,*\" stands for every mail");
    if (rule.matchType != 0 && !rule.conditions.empty())
        throw UsageError("a rule whose match type is not 0 has no conditions");
}

void editMarks(Policy& policy, Rule& rule, const RuleEditOptions& options) {
    for (const std::string& text : options.activated) {
        const std::string task = fullPath(text);
        if (!removeMark(rule, task))
            failForMissing("inactive mark " + inQuotes(task, kMaxName) + " of " + ruleText(options.path));
    }
    for (const std::string& text : options.inactivated) {
        const std::string task = fullPath(text);
        findTask(policy, task);
        const bool isMarked = std::any_of(rule.inactive.begin(), rule.inactive.end(),
                                          [&](const InactiveMark& mark) { return isMarkFor(mark, task); });
        if (!isMarked) rule.inactive.push_back({task, {}});
    }
}

void editRule(Policy& policy, Rule& rule, const RuleEditOptions& options) {
    editTexts(rule, options.texts);
    if (options.matchType) rule.matchType = static_cast<int32_t>(*options.matchType);
    editConditions(rule, options);
    editMarks(policy, rule, options);
}

}  // namespace

void runRuleAdd(const RuleEditOptions& options, std::ostream& out, std::ostream& err) {
    const RuleEditOptions asked = withFullPath(options);
    const auto [parent, name] = splitFullPath(asked.path);
    const auto add = [&, parent = parent, name = name](Policy& policy) {
        Rule rule;
        rule.name = name;
        editRule(policy, rule, asked);
        addNamed(findRule(policy, parent).rules, rule, asked.position, ruleText(asked.path));
    };
    editPolicy(asked, add, out, err);
}

void runRuleSet(const RuleEditOptions& options, std::ostream& out, std::ostream& err) {
    const RuleEditOptions asked = withFullPath(options);
    const auto set = [&](Policy& policy) { editRule(policy, findRule(policy, asked.path), asked); };
    editPolicy(asked, set, out, err);
}

void runRuleMove(const RuleEditOptions& options, std::ostream& out, std::ostream& err) {
    RuleEditOptions asked = withFullPath(options);
    asked.moved = asked.path;
    const auto [parent, name] = splitFullPath(asked.path);
    const auto move = [&, parent = parent, name = name](Policy& policy) {
        moveNamed(findRule(policy, parent).rules, name, asked.position, ruleText(asked.path));
    };
    editPolicy(asked, move, out, err);
}

void runRuleRemove(const RuleEditOptions& options, std::ostream& out, std::ostream& err) {
    const RuleEditOptions asked = withFullPath(options);
    const auto [parent, name] = splitFullPath(asked.path);
    const auto remove = [&, parent = parent, name = name](Policy& policy) {
        const size_t below = findRule(policy, asked.path).rules.size();
        if (below != 0 && !asked.isRecursive)
            throw PolicyError(ruleText(asked.path) + " has rules below it: " + grouped(below) +
                              "; give --recursive to remove these too");
        removeNamed(findRule(policy, parent).rules, name, ruleText(asked.path));
    };
    editPolicy(asked, remove, out, err);
}

}  // namespace tool
