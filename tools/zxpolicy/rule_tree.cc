#include "rule_tree.h"

#include "names_of.h"
#include "policy_file.h"
#include "text.h"

namespace tool {

namespace {

std::vector<std::string> readTasks(const RuleHandle& rule, const std::string& path) {
    std::vector<std::string> tasks;
    for (const std::string& name : namesOf(zxpol_enumTask, rule.get(), "the tasks of rule " + oneLine(path)))
        tasks.push_back(childName(path, name));
    return tasks;
}

RuleNode readNode(const RuleHandle& rule, const std::string& name, const std::string& path) {
    RuleNode node{name, path, readTasks(rule, path), {}};
    for (const std::string& child : namesOf(zxpol_enumRule, rule.get(), "the rules below rule " + oneLine(path))) {
        const std::string below = childName(path, child);
        int result = ZXPOL_S_OK;
        const RuleHandle handle(zxpol_openRule(rule.get(), child.c_str(), &result));
        require(result, "cannot open rule " + oneLine(below));
        node.rules.push_back(readNode(handle, child, below));
    }
    return node;
}

}  // namespace

RuleNode readRuleTree(const RuleHiveHandle& hive) {
    int result = ZXPOL_S_OK;
    const RuleHandle root(zxpol_openRootRule(hive.get(), &result));
    require(result, "cannot open rule \\");
    return readNode(root, "", "\\");
}

}  // namespace tool
