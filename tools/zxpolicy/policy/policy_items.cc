#include "policy/policy_items.h"

#include "output/text.h"

namespace tool {

namespace {

void add(std::vector<Fact>& facts, const char* label, const std::string& text) {
    if (!text.empty()) facts.push_back({label, text, ""});
}

void addPosition(std::vector<Fact>& facts, const Position& position) {
    add(facts, "position", grouped(position.number) + " of " + grouped(position.siblings));
}

template <class Item>
void addTexts(std::vector<Fact>& facts, const Item& item) {
    add(facts, "display name", item.displayName);
    add(facts, "comment", item.comment);
}

// A key is told by what is below it, unless there is nothing.
void addSetting(std::vector<Fact>& facts, const Setting& setting) {
    for (auto item = setting.begin(); item != setting.end(); ++item) {
        const auto next = std::next(item);
        const std::string below = item->first + "\\";
        const bool hasItems = next != setting.end() && next->first.compare(0, below.size(), below) == 0;
        if (!hasItems) facts.push_back({"setting", item->first, settingText(item->second)});
    }
}

std::string summaryOf(const Task& task) {
    std::string text = "filter " + std::to_string(task.filter);
    if (!task.enable) text += ", disabled";
    if (task.overridable) text += ", overridable";
    return text;
}

const char* word(bool truth) {
    return truth ? "true" : "false";
}

// Adds the settings from `item` on whose paths begin with `prefix`; returns the first that does not.
Setting::const_iterator addJson(Json& json, Setting::const_iterator item, Setting::const_iterator end,
                                const std::string& prefix) {
    while (item != end && item->first.compare(0, prefix.size(), prefix) == 0) {
        const std::string name = item->first.substr(prefix.size());
        if (std::holds_alternative<SettingKey>(item->second)) {
            Json below = Json::object({});
            item = addJson(below, std::next(item), end, item->first + "\\");
            json.add(name.c_str(), below);
            continue;
        }
        if (const auto* number = std::get_if<uint32_t>(&item->second)) json.add(name.c_str(), *number);
        if (const auto* text = std::get_if<std::string>(&item->second)) json.add(name.c_str(), *text);
        if (const auto* texts = std::get_if<std::vector<std::string>>(&item->second)) json.add(name.c_str(), *texts);
        ++item;
    }
    return item;
}

Json jsonOf(const Setting& setting) {
    Json json = Json::object({});
    addJson(json, setting.begin(), setting.end(), "");
    return json;
}

}  // namespace

std::string settingText(const SettingItem& item) {
    if (const auto* number = std::get_if<uint32_t>(&item)) return std::to_string(*number);
    if (const auto* text = std::get_if<std::string>(&item)) return inQuotes(*text, text->size());
    const auto* texts = std::get_if<std::vector<std::string>>(&item);
    if (texts == nullptr) return "{}";
    std::string line;
    for (const std::string& text : *texts)
        line += (line.empty() ? "" : ", ") + inQuotes(text, text.size());
    return "[" + line + "]";
}

std::vector<Fact> contentFacts(const Rule& rule) {
    std::vector<Fact> facts;
    for (const Condition& condition : rule.conditions)
        facts.push_back({"when", condition.sender, "-> " + condition.receiver});
    if (rule.matchType != 0) add(facts, "type", std::to_string(rule.matchType));
    for (const std::string& task : markedTasks(rule))
        add(facts, "off", task);
    for (const Task& task : rule.tasks)
        facts.push_back({"task", task.name, summaryOf(task)});
    return facts;
}

std::vector<Fact> attributeFacts(const Rule& rule, const std::optional<Position>& position) {
    std::vector<Fact> facts;
    addTexts(facts, rule);
    if (position) addPosition(facts, *position);
    return facts;
}

std::vector<Fact> factsOf(const Task& task, const Position& position) {
    std::vector<Fact> facts;
    addTexts(facts, task);
    addPosition(facts, position);
    add(facts, "filter", std::to_string(task.filter));
    add(facts, "enable", word(task.enable));
    add(facts, "overridable", word(task.overridable));
    for (const auto& [name, outcome] : task.outcomes)
        facts.push_back({"outcome", name, "-> " + outcome.text});
    addSetting(facts, task.setting);
    return facts;
}

std::vector<Fact> factsOf(const Classification& classification) {
    std::vector<Fact> facts;
    addTexts(facts, classification);
    for (const Action& action : classification.actions)
        facts.push_back({"action", action.name, "type " + std::to_string(action.actionType)});
    return facts;
}

std::vector<Fact> factsOf(const Action& action, const Position& position) {
    std::vector<Fact> facts;
    addTexts(facts, action);
    addPosition(facts, position);
    add(facts, "type", std::to_string(action.actionType));
    addSetting(facts, action.setting);
    return facts;
}

Json jsonOf(const Condition& condition) {
    return Json::object({{"sender", condition.sender}, {"receiver", condition.receiver}});
}

Json jsonOf(const Rule& rule, const std::string& path) {
    Json conditions = Json::array();
    for (const Condition& condition : rule.conditions)
        conditions.add(jsonOf(condition));
    Json tasks = Json::array();
    for (const Task& task : rule.tasks)
        tasks.add(jsonOf(task, childName(path, task.name)));
    return Json::object({{"path", path},
                         {"displayName", rule.displayName},
                         {"comment", rule.comment},
                         {"matchType", static_cast<uint32_t>(rule.matchType)},
                         {"conditions", conditions},
                         {"inactive", markedTasks(rule)},
                         {"tasks", tasks}});
}

Json jsonOf(const Task& task, const std::string& fullName) {
    Json outcomes = Json::object({});
    for (const auto& [name, outcome] : task.outcomes)
        outcomes.add(name.c_str(), outcome.text);
    return Json::object({{"path", fullName},
                         {"displayName", task.displayName},
                         {"comment", task.comment},
                         {"filter", task.filter},
                         {"enable", task.enable},
                         {"overridable", task.overridable},
                         {"outcomes", outcomes},
                         {"setting", jsonOf(task.setting)}});
}

Json jsonOf(const Action& action) {
    return Json::object({{"name", action.name},
                         {"displayName", action.displayName},
                         {"comment", action.comment},
                         {"actionType", action.actionType},
                         {"setting", jsonOf(action.setting)}});
}

Json jsonOf(const Classification& classification) {
    Json actions = Json::array();
    for (const Action& action : classification.actions)
        actions.add(jsonOf(action));
    return Json::object({{"name", classification.name},
                         {"displayName", classification.displayName},
                         {"comment", classification.comment},
                         {"actions", actions}});
}

}  // namespace tool
