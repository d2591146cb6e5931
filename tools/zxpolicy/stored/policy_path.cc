#include "stored/policy_path.h"

#include "output/text.h"
#include "policy/policy_check.h"
#include "result_names.h"
#include "stored/classification_store_reader.h"
#include "tool_error.h"
#include "zxpolicy.h"

namespace tool {

namespace {

std::string withoutLastSlash(std::string text) {
    if (text.size() > 1 && text.back() == '\\') text.pop_back();
    return text;
}

}  // namespace

std::string fullPath(const std::string& text) {
    if (text.empty() || text.front() != '\\')
        throw UsageError(inQuotes(text, kMaxName) +
                         " does not begin with a backslash, as a path does; write it in quotes, such as '\\Sales'");
    if (text.find("\\\\") != std::string::npos)
        throw UsageError(inQuotes(text, kMaxName) +
                         " has an empty name in it: two backslashes follow each other; in single quotes one is enough");
    return withoutLastSlash(text);
}

std::pair<std::string, std::string> splitFullPath(const std::string& path) {
    const size_t slash = path.rfind('\\');
    if (path == "\\") throw UsageError("\\ is the root rule: it cannot be added, moved or removed, and is no task");
    return {slash == 0 ? "\\" : path.substr(0, slash), path.substr(slash + 1)};
}

std::pair<std::string, std::string> splitActionName(const std::string& text) {
    const size_t slash = text.find('\\');
    if (slash == std::string::npos) return {text, ""};
    if (slash + 1 == text.size()) throw UsageError("the name of an action of " + inQuotes(text) + " is empty");
    return {text.substr(0, slash), text.substr(slash + 1)};
}

Rule& findRule(Policy& policy, const std::string& path) {
    Rule* rule = &policy.root;
    for (size_t begin = 1; begin < path.size();) {
        const size_t end = std::min(path.find('\\', begin), path.size());
        const auto child = findNamed(rule->rules, path.substr(begin, end - begin));
        if (child == rule->rules.end()) failForMissing(ruleText(path));
        rule = &*child;
        begin = end + 1;
    }
    return *rule;
}

Task& findTask(Policy& policy, const std::string& fullName) {
    const auto [path, name] = splitFullPath(fullName);
    Rule& rule = findRule(policy, path);
    const auto task = findNamed(rule.tasks, name);
    if (task == rule.tasks.end()) failForMissing(taskText(fullName));
    return *task;
}

Classification& findClassification(Policy& policy, const std::string& name) {
    const auto found = findNamed(policy.classifications, name);
    if (found == policy.classifications.end()) failForMissing(classificationText(name));
    return *found;
}

Action& findAction(Policy& policy, const std::string& classification, const std::string& name) {
    std::vector<Action>& actions = findClassification(policy, classification).actions;
    const auto action = findNamed(actions, name);
    if (action == actions.end()) failForMissing(actionText(classification, name));
    return *action;
}

std::string ruleText(const std::string& path) {
    return "rule " + oneLine(path);
}

std::string taskText(const std::string& fullName) {
    return "task " + oneLine(fullName);
}

std::string actionText(const std::string& classification, const std::string& name) {
    return "action " + inQuotes(name, kMaxName) + " of " + classificationText(classification);
}

void failForMissing(const std::string& what) {
    throw PolicyError("there is no " + what + ": " + codeText(ZXPOL_E_NOT_FOUND) +
                      ": the commands tree and show tell what there is; letter case counts");
}

}  // namespace tool
