#include "task_reader.h"

#include <algorithm>
#include <limits>

#include "policy_check.h"
#include "policy_limits.h"
#include "text.h"
#include "unique_names.h"

namespace tool {

namespace {

constexpr size_t kAnyLength = std::numeric_limits<size_t>::max();

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
        task.outcomes.emplace(name, std::move(text));
    }
}

std::vector<std::string> readTexts(const YamlReader& reader, const YamlNode& node, const std::string& what) {
    std::vector<std::string> texts;
    for (const YamlNode& item : node.items) {
        texts.push_back(reader.text(item, "an item of " + what, kAnyLength));
        if (texts.back().empty())
            reader.source().fail(item.place, "an item of " + what + " is empty, which a list of texts cannot hold");
    }
    return texts;
}

// Reads a map of settings below `prefix`, which is empty or ends with a backslash.
void readSetting(const YamlReader& reader, const YamlNode& node, const std::string& prefix, Setting& setting) {
    if (static_cast<size_t>(std::count(prefix.begin(), prefix.end(), '\\')) >= kMaxSettingDepth)
        reader.source().fail(node.place, "settings nest deeper than " + std::to_string(kMaxSettingDepth) + " levels");
    UniqueNames names(reader.source(), "setting");
    for (size_t i = 0; i + 1 < node.items.size(); i += 2) {
        const YamlNode& value = node.items[i + 1];
        const std::string name = reader.name(node.items[i], "the name of a setting");
        names.add(name, node.items[i].place);
        const std::string path = prefix + name;
        const std::string what = "setting " + inQuotes(path, kMaxName);
        if (value.kind == YamlNode::Kind::Map) {
            reader.map(value, what);
            setting.emplace(path, SettingKey{});
            readSetting(reader, value, path + "\\", setting);
        } else if (value.kind == YamlNode::Kind::Sequence) {
            setting.emplace(path, readTexts(reader, reader.sequence(value, what), what));
        } else if (reader.isNumber(value)) {
            setting.emplace(path, reader.number(value, what));
        } else {
            setting.emplace(path, reader.text(value, what, kAnyLength));
        }
    }
}

}  // namespace

Task readTask(const YamlReader& reader, const YamlNode& node, const std::string& rulePath) {
    const YamlFields fields(
        reader, node, "a task",
        {"name", "displayName", "comment", "filter", "enable", "overridable", "outcomes", "setting"});
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
    if (const YamlNode* setting = fields.find("setting"))
        readSetting(reader, reader.map(*setting, "\"setting\" of a task"), "", task.setting);
    return task;
}

}  // namespace tool
