#include "policy/policy_faults.h"

#include <algorithm>
#include <map>

#include "output/text.h"
#include "pattern/cond_wildcard_pattern.h"
#include "policy/policy_check.h"
#include "policy/policy_limits.h"

namespace tool {

namespace {

// What is wrong with a side that other programs may have written; `fault` is what is wrong with it as a text. The
// library refuses such a side in a file, and a file that says it could never be applied.
std::string storedSideFault(const std::string& side, const std::string& fault) {
    const bool isList = side.size() >= 3 && side.front() == '(' && side.back() == ')';
    if (!fault.empty() || isList || ZxPolCondWildcardPattern::isPatternValid(side.c_str())) return fault;
    return "is no address, no pattern such as *@example.com and no (LIST)";
}

class FaultFinder {
public:
    std::vector<std::string> run(const Policy& policy) {
        Names lists;
        for (const auto& [name, list] : policy.lists) {
            const std::string where = "address list " + inQuotes(name, kMaxName);
            lookAtName(where, name, lists);
            const auto* directory = std::get_if<DirectoryList>(&list);
            if (directory != nullptr && directory->password)
                add(where + ": its password", textFault(*directory->password, kMaxPassword));
        }
        Names classifications;
        for (const Classification& classification : policy.classifications)
            lookAtClassification(classification, classifications);
        if (policy.root.conditions.empty()) add("rule \\", "has no conditions");
        lookAtRule(policy.root, "\\", 1);
        return std::move(_faults);
    }

private:
    using Names = std::map<std::string, std::string>;

    void add(const std::string& where, const std::string& fault) {
        if (!fault.empty()) _faults.push_back(where + " " + fault);
    }

    // Checks a name, and that none of its siblings differs from it only in letter case.
    void lookAtName(const std::string& where, const std::string& name, Names& siblings) {
        add(where, nameFault(name));
        const auto [found, isNew] = siblings.emplace(lowerCase(name), name);
        if (!isNew) add(where, "differs from " + inQuotes(found->second, kMaxName) + " only in letter case");
    }

    void lookAtClassification(const Classification& classification, Names& siblings) {
        const std::string where = "classification " + inQuotes(classification.name, kMaxName);
        lookAtName(where, classification.name, siblings);
        Names actions;
        for (const Action& action : classification.actions) {
            const std::string subject = "action " + inQuotes(action.name, kMaxName) + " of " + where;
            lookAtName(subject, action.name, actions);
            lookAtSetting(subject, action.setting);
        }
    }

    void lookAtRule(const Rule& rule, const std::string& path, size_t depth) {
        const std::string where = "rule " + oneLine(path);
        if (depth > kMaxRuleDepth) return add(where, "lies deeper than a policy file can say");
        for (const Condition& condition : rule.conditions) {
            add(where + ": the sender " + inQuotes(condition.sender) + " of a condition",
                storedSideFault(condition.sender, senderFault(condition.sender)));
            add(where + ": the receiver " + inQuotes(condition.receiver) + " of a condition",
                storedSideFault(condition.receiver, receiverFault(condition.receiver)));
        }
        Names marks;
        for (const InactiveMark& mark : rule.inactive) {
            const std::string subject = where + ": the inactive mark " + inQuotes(mark.task, kMaxName);
            add(subject, markFault(mark.task));
            if (!marks.emplace(markKey(mark.task), mark.task).second) add(subject, "stands twice");
        }
        Names tasks;
        for (const Task& task : rule.tasks)
            lookAtTask(task, childName(path, task.name), tasks);
        Names rules;
        for (const Rule& child : rule.rules) {
            const std::string childPath = childName(path, child.name);
            lookAtName("rule " + oneLine(childPath), child.name, rules);
            lookAtRule(child, childPath, depth + 1);
        }
    }

    void lookAtTask(const Task& task, const std::string& fullName, Names& siblings) {
        const std::string where = "task " + oneLine(fullName);
        lookAtName(where, task.name, siblings);
        if (fullName.size() > kMaxName) add(where, "has a full name longer than 255 bytes");
        Names outcomes;
        for (const auto& [name, outcome] : task.outcomes) {
            const std::string subject = where + ": outcome " + inQuotes(name, kMaxName);
            lookAtName(subject, name, outcomes);
            if (outcome.text.empty()) add(subject, "is empty");
        }
        lookAtSetting(where, task.setting);
    }

    void lookAtSetting(const std::string& where, const Setting& setting) {
        std::map<std::string, Names> settings;
        for (const auto& [path, item] : setting) {
            const size_t slash = path.rfind('\\');
            const std::string parent = slash == std::string::npos ? "" : path.substr(0, slash);
            const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
            lookAtName(where + ": setting " + inQuotes(path, 1024), name, settings[parent]);
            if (static_cast<size_t>(std::count(path.begin(), path.end(), '\\')) >= kMaxSettingDepth)
                add(where + ": setting " + inQuotes(path, 1024), "lies deeper than a policy file can say");
        }
    }

    std::vector<std::string> _faults;
};

}  // namespace

std::vector<std::string> policyFaults(const Policy& policy) {
    return FaultFinder().run(policy);
}

}  // namespace tool
