#include "policy/task_reader.h"

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_keys.h"
#include "policy/setting_reader.h"
#include "policy/unique_names.h"

namespace tool {

namespace {

void readOutcomes(const YamlReader& reader, const YamlFields& fields, Task& task) {
    const YamlNode* node = fields.find("outcomes");
    if (node == nullptr) return;
    reader.map(*node, "\"outcomes\" of a task");
    UniqueNames names(reader.source(), "outcome");
    for (size_t i = 0; i + 1 < node->items.size(); i += 2) {
        const YamlNode& key = node->items[i];
        const YamlNode& value = node->items[i + 1];
        const std::string name = reader.name(key, "the name of an outcome");
        names.add(name, key.place);
        std::string text = reader.text(value, "outcome " + inQuotes(name, kMaxName), kAnyLength);
        if (text.empty()) reader.source().fail(value.place, "outcome " + inQuotes(name, kMaxName) + " is empty");
        task.outcomes.emplace(name, OutcomeText{std::move(text), value.place});
    }
}

}  // namespace

Task readTask(const YamlReader& reader, const YamlNode& node, const std::string& rulePath) {
    const YamlFields fields(reader, node, "a task", kTaskKeys);
    Task task;
    task.place = node.place;
    const YamlNode& nameNode = fields.need("name");
    task.name = reader.name(nameNode, "the name of a task");
    if (childName(rulePath, task.name).size() > kMaxName)
        reader.source().fail(nameNode.place, "the full name of task " + inQuotes(task.name) + ", " +
                                                 inQuotes(childName(rulePath, task.name)) +
                                                 ", is longer than 255 bytes");
    task.displayName = fields.text("displayName", kMaxName);
    task.comment = fields.text("comment", kMaxComment);
    task.filter = fields.number("filter");
    task.enable = fields.truth("enable", true);
    task.overridable = fields.truth("overridable", false);
    readOutcomes(reader, fields, task);
    task.setting = readSetting(reader, fields, "a task");
    return task;
}

}  // namespace tool
