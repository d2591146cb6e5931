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

}  // namespace tool
