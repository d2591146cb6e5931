#include "change/edit_parts.h"

#include <algorithm>
#include <iterator>

#include "policy/setting_reader.h"
#include "policy/yaml_fields.h"

namespace tool {

namespace {

void checkText(const std::optional<std::string>& text, size_t most, const char* what) {
    const std::string fault = text ? textFault(*text, most) : "";
    if (!fault.empty()) throw UsageError(std::string("the ") + what + " " + fault);
}

// The setting as the map of a policy file that says it: {a: {b: VALUE}} for the path a\b.
YamlNode nodeOf(const std::string& path, YamlNode value) {
    const size_t slash = path.find('\\');
    YamlNode below = slash == std::string::npos ? std::move(value) : nodeOf(path.substr(slash + 1), std::move(value));
    YamlNode key;
    key.kind = YamlNode::Kind::Scalar;
    key.tag = "!";
    key.text = path.substr(0, slash);
    YamlNode map;
    map.kind = YamlNode::Kind::Map;
    map.tag = "?";
    map.items = {std::move(key), std::move(below)};
    return map;
}

// The value as a policy file would have it; nothing at all is the empty text.
YamlNode valueOf(const YamlSource& source, const std::string& text) {
    if (!text.empty()) return parseYaml(source, text);
    YamlNode node;
    node.kind = YamlNode::Kind::Scalar;
    node.tag = "!";
    return node;
}

// Removes an item with all below it; false when there is none.
bool removeBelow(Setting& setting, const std::string& path) {
    const auto first = setting.find(path);
    if (first == setting.end()) return false;
    auto end = std::next(first);
    while (end != setting.end() && end->first.compare(0, path.size() + 1, path + "\\") == 0)
        ++end;
    setting.erase(first, end);
    return true;
}

std::string settingName(const std::string& path, const std::string& what) {
    return "setting " + inQuotes(path, kMaxName) + " of " + what;
}

// The items that the value makes at the path, with the keys above it.
Setting madeOf(const std::string& path, const std::string& value) {
    const YamlSource source("--setting");
    try {
        return readSetting(YamlReader(source), nodeOf(path, valueOf(source, value)));
    } catch (const PolicyError& fault) {
        throw UsageError(fault.what());
    }
}

// Sets one item, and all below it when its value is a map.
void setItem(Setting& setting, const std::string& path, const std::string& value, const std::string& what) {
    const Setting made = madeOf(path, value);
    removeBelow(setting, path);
    for (const auto& [name, item] : made) {
        requireNoNamesake(setting, name, settingName(name, what));
        setting[name] = item;
    }
}

}  // namespace

void checkTexts(const TextEdit& texts) {
    checkText(texts.displayName, kMaxName, "display name");
    checkText(texts.comment, kMaxComment, "comment");
}

std::pair<std::string, std::string> splitAssignment(const std::string& text, const std::string& what) {
    const size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        throw UsageError(what + " " + inQuotes(text) + " is not of the form NAME=VALUE");
    return {text.substr(0, sign), text.substr(sign + 1)};
}

void failForNamesake(const std::string& what, const std::string& other) {
    throw PolicyError("cannot create " + what + ": there is " + inQuotes(other, kMaxName) + ": " +
                      codeText(ZXPOL_E_ALREADY_EXISTS) + ": letter case does not tell names apart");
}

void editSetting(Setting& setting, const SettingEdit& edit, const std::string& what) {
    for (const std::string& path : edit.removed)
        if (!removeBelow(setting, path)) failForMissing(settingName(path, what));
    for (const std::string& text : edit.set) {
        const auto [path, value] = splitAssignment(text, "the setting");
        setItem(setting, path, value, what);
    }
}

bool isMarkFor(const InactiveMark& mark, const std::string& task) {
    return markKey(mark.task) == markKey(task);
}

bool removeMark(Rule& rule, const std::string& task) {
    const auto isSame = [&](const InactiveMark& mark) { return isMarkFor(mark, task); };
    const auto others = std::remove_if(rule.inactive.begin(), rule.inactive.end(), isSame);
    if (others == rule.inactive.end()) return false;
    rule.inactive.erase(others, rule.inactive.end());
    return true;
}

}  // namespace tool
