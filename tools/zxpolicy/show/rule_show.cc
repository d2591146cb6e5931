#include "show/rule_show.h"

#include <optional>
#include <ostream>
#include <vector>

#include "output/fact_lines.h"
#include "output/json.h"
#include "output/terminal_width.h"
#include "policy/policy_items.h"
#include "stored/policy_path.h"
#include "stored/stored_part.h"

namespace tool {

namespace {

// Prints what a rule holds, then the rules below it, each behind the lines of the tree.
void printBelow(std::ostream& out, const Rule& rule, const std::string& lead, size_t width) {
    printFacts(out, lead + (rule.rules.empty() ? "   " : "│  "), contentFacts(rule), width);
    for (const Rule& child : rule.rules) {
        const bool isLast = &child == &rule.rules.back();
        out << lead << (isLast ? "└─ " : "├─ ") << oneLine(child.name);
        if (!child.displayName.empty()) out << "  " << oneLine(child.displayName);
        out << '\n';
        printBelow(out, child, lead + (isLast ? "   " : "│  "), width);
    }
}

Json treeJson(const Rule& rule, const std::string& path) {
    Json rules = Json::array();
    for (const Rule& child : rule.rules)
        rules.add(treeJson(child, childName(path, child.name)));
    return jsonOf(rule, path).add("rules", rules);
}

template <class Items>
Position positionOf(const Items& items, const std::string& name) {
    const auto index = findNamed(items, name) - items.begin();
    return {static_cast<uint32_t>(index) + 1, static_cast<uint32_t>(items.size())};
}

std::optional<Position> positionOf(Policy& policy, const std::string& path) {
    if (path == "\\") return std::nullopt;
    const auto [parent, name] = splitFullPath(path);
    return positionOf(findRule(policy, parent).rules, name);
}

}  // namespace

void runTree(const RuleShowOptions& options, std::ostream& out) {
    Policy policy = readPolicyWithoutLists(options.store);
    const std::string path = fullPath(options.path);
    const Rule& rule = findRule(policy, path);
    if (options.format == OutputFormat::Json) {
        out << Json::report({{"tree", treeJson(rule, path)}}).line();
        return;
    }
    out << oneLine(path) << (rule.displayName.empty() ? "" : "  " + oneLine(rule.displayName)) << '\n';
    printBelow(out, rule, "", terminalWidth());
}

void runRuleShow(const RuleShowOptions& options, std::ostream& out) {
    Policy policy = readPolicyWithoutLists(options.store);
    const std::string path = fullPath(options.path);
    const Rule& rule = findRule(policy, path);
    const std::optional<Position> position = positionOf(policy, path);
    std::vector<std::string> children;
    for (const Rule& child : rule.rules)
        children.push_back(childName(path, child.name));
    if (options.format == OutputFormat::Json) {
        Json json = jsonOf(rule, path);
        json.add("position", position ? Json(position->number) : Json::null()).add("children", children);
        out << Json::report({{"rule", json}}).line();
        return;
    }
    std::vector<Fact> facts = attributeFacts(rule, position);
    for (const Fact& fact : contentFacts(rule))
        facts.push_back(fact);
    for (const std::string& child : children)
        facts.push_back({"rule", child, ""});
    out << ruleText(path) << '\n';
    printFacts(out, "  ", facts, terminalWidth());
}

void runTaskShow(const RuleShowOptions& options, std::ostream& out) {
    Policy policy = readPolicyWithoutLists(options.store);
    const std::string fullName = fullPath(options.path);
    const Task& task = findTask(policy, fullName);
    const Position position = positionOf(findRule(policy, splitFullPath(fullName).first).tasks, task.name);
    if (options.format == OutputFormat::Json) {
        out << Json::report({{"task", jsonOf(task, fullName).add("position", position.number)}}).line();
        return;
    }
    out << taskText(fullName) << '\n';
    printFacts(out, "  ", factsOf(task, position), terminalWidth());
}

}  // namespace tool
