#include "policy/policy_writer.h"

#include <string_view>

#include "policy/yaml_text.h"

namespace tool {

namespace {

// Collects lines at the current indentation.
class YamlOut {
public:
    explicit YamlOut(int depth = 0) : _depth(depth) {}

    void line(const std::string& text) {
        _text.append(static_cast<size_t>(_depth) * 2, ' ').append(_isItem ? "- " : "").append(text).append("\n");
        if (_isItem) ++_depth;
        _isItem = false;
    }
    void entry(const char* key, const std::string& value) { line(std::string(key) + ": " + value); }
    void text(const char* key, const std::string& value) {
        if (!value.empty()) entry(key, yamlText(value));
    }
    void number(const char* key, uint32_t value) {
        if (value != 0) entry(key, std::to_string(value));
    }

    // Opens a block below a key; to be closed with leave.
    void enter(const std::string& key) {
        line(key + ":");
        ++_depth;
    }
    void leave() { --_depth; }
    // Opens an item of a sequence, whose first line gets the dash; to be closed with leave.
    void item() { _isItem = true; }

    std::string take() { return std::move(_text); }

private:
    std::string _text;
    int _depth;
    bool _isItem = false;
};

void writeListBody(YamlOut& out, const NormalList& list) {
    if (!list.addresses) return;
    if (list.addresses->empty()) return out.entry("addresses", "[]");
    out.enter("addresses");
    for (const std::string& address : *list.addresses)
        out.line("- " + yamlQuoted(address));
    out.leave();
}

void writeListBody(YamlOut& out, const DirectoryList& list) {
    out.entry("type", "directory");
    out.text("server", list.server);
    out.number("port", list.port);
    out.text("searchroot", list.searchroot);
    out.number("authentication", list.authentication);
    out.number("schematype", list.schematype);
    out.text("username", list.username);
    if (list.password) out.entry("password", yamlQuoted(*list.password));
    out.text("filter", list.filter);
}

void writeList(YamlOut& out, const std::string& name, const AddressList& list) {
    out.item();
    out.entry("name", yamlText(name));
    std::visit(
        [&](const auto& kind) {
            out.text("displayName", kind.displayName);
            out.text("comment", kind.comment);
            writeListBody(out, kind);
        },
        list);
    out.leave();
}

struct SettingWriter {
    std::string operator()(const SettingKey&) const { return "{}"; }
    std::string operator()(uint32_t number) const { return std::to_string(number); }
    std::string operator()(const std::string& text) const { return yamlQuoted(text); }
    std::string operator()(const std::vector<std::string>& texts) const {
        std::string out = "[";
        for (const std::string& text : texts)
            out.append(out.size() > 1 ? ", " : "").append(yamlQuoted(text));
        return out + "]";
    }
};

// Writes the settings from `item` on whose paths begin with `prefix`; returns the first that does not.
Setting::const_iterator writeSetting(YamlOut& out, Setting::const_iterator item, Setting::const_iterator end,
                                     const std::string& prefix) {
    while (item != end && item->first.compare(0, prefix.size(), prefix) == 0) {
        const std::string key = yamlText(std::string_view(item->first).substr(prefix.size()));
        const std::string below = item->first + "\\";
        const auto next = std::next(item);
        const bool hasItems = next != end && next->first.compare(0, below.size(), below) == 0;
        if (!hasItems) {
            out.line(key + ": " + std::visit(SettingWriter{}, item->second));
            item = next;
            continue;
        }
        out.enter(key);
        item = writeSetting(out, next, end, below);
        out.leave();
    }
    return item;
}

void writeSetting(YamlOut& out, const Setting& setting) {
    if (setting.empty()) return;
    out.enter("setting");
    writeSetting(out, setting.begin(), setting.end(), "");
    out.leave();
}

void writeClassification(YamlOut& out, const Classification& classification) {
    out.item();
    out.entry("name", yamlText(classification.name));
    out.text("displayName", classification.displayName);
    out.text("comment", classification.comment);
    if (!classification.actions.empty()) {
        out.enter("actions");
        for (const Action& action : classification.actions) {
            out.item();
            out.entry("name", yamlText(action.name));
            out.text("displayName", action.displayName);
            out.text("comment", action.comment);
            out.number("actionType", action.actionType);
            writeSetting(out, action.setting);
            out.leave();
        }
        out.leave();
    }
    out.leave();
}

void writeTask(YamlOut& out, const Task& task) {
    out.item();
    out.entry("name", yamlText(task.name));
    out.text("displayName", task.displayName);
    out.text("comment", task.comment);
    out.entry("filter", std::to_string(task.filter));
    if (!task.enable) out.entry("enable", "false");
    if (task.overridable) out.entry("overridable", "true");
    if (!task.outcomes.empty()) {
        out.enter("outcomes");
        for (const auto& [name, outcome] : task.outcomes)
            out.line(yamlText(name) + ": " + yamlText(outcome.text));
        out.leave();
    }
    writeSetting(out, task.setting);
    out.leave();
}

void writeRuleBody(YamlOut& out, const Rule& rule) {
    out.text("displayName", rule.displayName);
    out.text("comment", rule.comment);
    out.number("matchType", static_cast<uint32_t>(rule.matchType));
    if (!rule.conditions.empty()) {
        out.enter("conditions");
        for (const Condition& condition : rule.conditions)
            out.line("- {sender: " + yamlQuoted(condition.sender) + ", receiver: " + yamlQuoted(condition.receiver) +
                     "}");
        out.leave();
    }
    if (!rule.inactive.empty()) {
        out.enter("inactive");
        for (const std::string& task : markedTasks(rule))
            out.line("- " + yamlQuoted(task));
        out.leave();
    }
    if (!rule.tasks.empty()) {
        out.enter("tasks");
        for (const Task& task : rule.tasks)
            writeTask(out, task);
        out.leave();
    }
    if (!rule.rules.empty()) {
        out.enter("rules");
        for (const Rule& child : rule.rules) {
            out.item();
            out.entry("name", yamlText(child.name));
            writeRuleBody(out, child);
            out.leave();
        }
        out.leave();
    }
}

}  // namespace

std::string writePolicy(const Policy& policy) {
    YamlOut out;
    out.entry("zxpolicy", "1");
    if (!policy.lists.empty()) {
        out.enter("lists");
        for (const auto& [name, list] : policy.lists)
            writeList(out, name, list);
        out.leave();
    }
    if (!policy.classifications.empty()) {
        out.enter("classifications");
        for (const Classification& classification : policy.classifications)
            writeClassification(out, classification);
        out.leave();
    }
    if (!policy.exclusiveFilters.empty()) {
        out.enter("exclusiveFilters");
        for (const auto& [filter, priority] : policy.exclusiveFilters)
            out.line("- {filter: " + std::to_string(filter) +
                     ", priority: " + (priority == FilterPriority::Ascending ? "asc" : "desc") + "}");
        out.leave();
    }
    out.enter("root");
    writeRuleBody(out, policy.root);
    return out.take();
}

}  // namespace tool
