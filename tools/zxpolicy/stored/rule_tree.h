// The rules of a store by name, with their conditions and the names of their tasks.
#pragma once

#include <string>
#include <vector>

#include "policy/policy_file.h"
#include "stored/handles.h"

namespace tool {

struct RuleNode {
    std::string name;  // empty for the root
    std::string path;
    std::vector<Condition> conditions;  // those that a match looks at
    std::vector<std::string> tasks;     // full names, in order
    std::vector<RuleNode> rules;
};

// Reads the tree from its root. Throws a StoreError.
RuleNode readRuleTree(const RuleHiveHandle& hive);

// Visits a rule, then all below it, in the order of the tree.
template <class Visit>
void forEachRule(const RuleNode& node, const Visit& visit) {
    visit(node);
    for (const RuleNode& child : node.rules)
        forEachRule(child, visit);
}

}  // namespace tool
