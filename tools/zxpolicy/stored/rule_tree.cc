#include "stored/rule_tree.h"

#include "output/text.h"
#include "stored/names_of.h"

namespace tool {

namespace {

std::vector<std::string> readTasks(const RuleHandle& rule, const std::string& path) {
    std::vector<std::string> tasks;
    for (const std::string& name : namesOf(zxpol_enumTask, rule.get(), "the tasks of rule " + oneLine(path)))
        tasks.push_back(childName(path, name));
    return tasks;
}

// A match takes a condition that cannot be read for the end of them.
std::vector<Condition> readConditions(const RuleHandle& rule) {
    std::vector<Condition> conditions;
    for (;;) {
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        zxpol_enumCondition(rule.get(), static_cast<uint32_t>(conditions.size()),
                            reinterpret_cast<unsigned char*>(&pair), &size, &result);
        if (ZX_FAILURE(result)) return conditions;
        conditions.push_back({pair.sender, pair.receiver, {}});
    }
}

RuleNode readNode(const RuleHandle& rule, const std::string& name, const std::string& path) {
    RuleNode node{name, path, readConditions(rule), readTasks(rule, path), {}};
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
