#include "policy/rule_reader.h"

#include <limits>

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_keys.h"
#include "policy/policy_limits.h"
#include "policy/task_reader.h"
#include "policy/unique_names.h"

namespace tool {

namespace {

std::string readSide(const YamlReader& reader, const YamlFields& fields, const char* key, bool isSender) {
    const YamlNode& node = fields.need(key);
    const std::string what = std::string("\"") + key + "\" of a condition";
    std::string side = reader.text(node, what, kAnyLength);
    const std::string fault = isSender ? senderFault(side) : receiverFault(side);
    if (!fault.empty()) reader.source().fail(node.place, what + " " + fault);
    return side;
}

void readConditions(const YamlReader& reader, const YamlFields& fields, Rule& rule) {
    for (const YamlNode& node : fields.items("conditions")) {
        const YamlFields sides(reader, node, "a condition", kConditionKeys);
        std::string sender = readSide(reader, sides, "sender", true);
        std::string receiver = readSide(reader, sides, "receiver", false);
        rule.conditions.push_back({std::move(sender), std::move(receiver), node.place, sides.need("sender").place,
                                   sides.need("receiver").place});
    }
}

void readInactiveMarks(const YamlReader& reader, const YamlFields& fields, Rule& rule) {
    std::map<std::string, std::string> seen;
    for (const YamlNode& node : fields.items("inactive")) {
        const std::string task = reader.text(node, "an inactive mark", kAnyLength);
        const std::string fault = markFault(task);
        if (!fault.empty()) reader.source().fail(node.place, "an inactive mark " + fault);
        if (!seen.emplace(markKey(task), task).second)
            reader.source().fail(node.place, "the inactive mark " + inQuotes(task, kMaxName) + " stands twice");
        rule.inactive.push_back({task, node.place});
    }
}

void readTasks(const YamlReader& reader, const YamlFields& fields, const std::string& path, Rule& rule) {
    UniqueNames names(reader.source(), "task");
    for (const YamlNode& node : fields.items("tasks")) {
        rule.tasks.push_back(readTask(reader, node, path));
        names.add(rule.tasks.back().name, node.place);
    }
}

// Reads what the root and all other rules have in common.
Rule readRule(const YamlReader& reader, const YamlNode& node, const YamlFields& fields, const std::string& path,
              size_t depth) {
    if (depth > kMaxRuleDepth)
        reader.source().fail(node.place, "rules nest deeper than " + std::to_string(kMaxRuleDepth) + " levels");
    Rule rule;
    rule.place = node.place;
    rule.displayName = fields.text("displayName", kMaxName);
    rule.comment = fields.text("comment", kMaxComment);
    rule.matchType = static_cast<int32_t>(fields.number("matchType", std::numeric_limits<int32_t>::max()));
    readConditions(reader, fields, rule);
    if (rule.matchType != 0 && !rule.conditions.empty())
        reader.source().fail(rule.conditions.front().place, "a rule whose matchType is not 0 has no conditions");
    readInactiveMarks(reader, fields, rule);
    readTasks(reader, fields, path, rule);
    UniqueNames names(reader.source(), "rule");
    for (const YamlNode& child : fields.items("rules")) {
        const YamlFields below(reader, child, "a rule", kRuleKeys);
        const YamlNode& nameNode = below.need("name");
        std::string name = reader.name(nameNode, "the name of a rule");
        names.add(name, nameNode.place);
        rule.rules.push_back(readRule(reader, child, below, childName(path, name), depth + 1));
        rule.rules.back().name = std::move(name);
    }
    return rule;
}

}  // namespace

Rule readRootRule(const YamlReader& reader, const YamlNode& node) {
    const YamlFields fields(reader, node, "the root rule", kRootKeys);
    Rule root = readRule(reader, node, fields, "\\", 1);
    if (root.conditions.empty()) {
        const YamlNode* conditions = fields.find("conditions");
        reader.source().fail(conditions == nullptr ? node.place : conditions->place,
                             "the root rule has no conditions; {sender: \"*\", receiver: \"*\"} stands for every mail");
    }
    return root;
}

}  // namespace tool
