// Finding a rule, task, classification or action of a policy by the name that the command line gives.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "policy/policy_file.h"

namespace tool {

// The path of a rule or the full name of a task as a user writes it: it begins with a backslash, and one at its end
// does not count. Throws a UsageError.
std::string fullPath(const std::string& text);

// The path of the rule that a full path is below, and the last name. Throws a UsageError for the root, which has none.
std::pair<std::string, std::string> splitFullPath(const std::string& path);

// A classification's name, and that of an action behind a backslash; empty for the classification itself.
std::pair<std::string, std::string> splitActionName(const std::string& text);

// All of these throw a PolicyError when there is no such thing.
Rule& findRule(Policy& policy, const std::string& path);
Task& findTask(Policy& policy, const std::string& fullName);
Classification& findClassification(Policy& policy, const std::string& name);
Action& findAction(Policy& policy, const std::string& classification, const std::string& name);

// Names in errors, such as: rule \Sales
std::string ruleText(const std::string& path);
std::string taskText(const std::string& fullName);
std::string actionText(const std::string& classification, const std::string& name);

// Throws a PolicyError that there is no such thing.
[[noreturn]] void failForMissing(const std::string& what);

// The item of this name, or the end.
template <class Items>
auto findNamed(Items& items, const std::string& name) {
    return std::find_if(items.begin(), items.end(), [&](const auto& item) { return item.name == name; });
}

}  // namespace tool
