#include "policy/setting_reader.h"

#include <algorithm>

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_limits.h"
#include "policy/unique_names.h"

namespace tool {

namespace {

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
void readBelow(const YamlReader& reader, const YamlNode& node, const std::string& prefix, Setting& setting) {
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
            readBelow(reader, value, path + "\\", setting);
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

Setting readSetting(const YamlReader& reader, const YamlFields& fields, const std::string& what) {
    Setting setting;
    if (const YamlNode* node = fields.find("setting"))
        readBelow(reader, reader.map(*node, "\"setting\" of " + what), "", setting);
    return setting;
}

Setting readSetting(const YamlReader& reader, const YamlNode& map) {
    Setting setting;
    readBelow(reader, map, "", setting);
    return setting;
}

}  // namespace tool
