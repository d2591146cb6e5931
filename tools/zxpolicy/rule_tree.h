// The rules of a store by name, with the names of their tasks.
#pragma once

#include <string>
#include <vector>

#include "handles.h"

namespace tool {

struct RuleNode {
    std::string name;  // empty for the root
    std::string path;
    std::vector<std::string> tasks;  // full names, in order
    std::vector<RuleNode> rules;
};

// Reads the tree from its root. Throws a StoreError.
RuleNode readRuleTree(const RuleHiveHandle& hive);

// The full names of the tasks of the rules on the way from the root to the rule at `path`, in order. Throws a
// StoreError.
std::vector<std::string> tasksOnPath(const RuleHiveHandle& hive, const std::string& path);

}  // namespace tool
