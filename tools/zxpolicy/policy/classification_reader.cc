#include "policy/classification_reader.h"

#include "policy/policy_check.h"
#include "policy/policy_keys.h"
#include "policy/setting_reader.h"
#include "policy/unique_names.h"

namespace tool {

namespace {

Action readAction(const YamlReader& reader, const YamlFields& fields, const std::string& name) {
    Action action;
    action.name = name;
    action.displayName = fields.text("displayName", kMaxName);
    action.comment = fields.text("comment", kMaxComment);
    action.actionType = fields.number("actionType");
    action.setting = readSetting(reader, fields, "an action");
    return action;
}

Classification readClassification(const YamlReader& reader, const YamlFields& fields, const std::string& name) {
    Classification classification;
    classification.name = name;
    classification.displayName = fields.text("displayName", kMaxName);
    classification.comment = fields.text("comment", kMaxComment);
    UniqueNames names(reader.source(), "action");
    for (const YamlNode& node : fields.items("actions")) {
        const YamlFields action(reader, node, "an action", kActionKeys);
        const YamlNode& nameNode = action.need("name");
        const std::string actionName = reader.name(nameNode, "the name of an action");
        names.add(actionName, nameNode.place);
        classification.actions.push_back(readAction(reader, action, actionName));
    }
    return classification;
}

}  // namespace

std::vector<Classification> readClassifications(const YamlReader& reader, const YamlFields& top) {
    std::vector<Classification> classifications;
    UniqueNames names(reader.source(), "classification");
    for (const YamlNode& node : top.items("classifications")) {
        const YamlFields fields(reader, node, "a classification", kClassificationKeys);
        const YamlNode& nameNode = fields.need("name");
        const std::string name = reader.name(nameNode, "the name of a classification");
        names.add(name, nameNode.place);
        classifications.push_back(readClassification(reader, fields, name));
    }
    return classifications;
}

}  // namespace tool
