#include "classification_store_reader.h"

#include "names_of.h"
#include "policy_check.h"
#include "raw_key.h"
#include "setting_store_reader.h"
#include "text.h"

namespace tool {

namespace {

// The hive, or nothing: opening it by the library would make its key in a store without classifications.
ClassificationHiveHandle openHive(const Store& store) {
    if (!openRawKey(store.key(), "Classification")) return {};
    int result = ZXPOL_S_OK;
    ClassificationHiveHandle hive(zxpol_openClassificationHive(store.key(), &result));
    require(result, "cannot open the classifications in " + oneLine(store.location()));
    return hive;
}

std::vector<std::string> namesIn(const ClassificationHiveHandle& hive) {
    if (!hive) return {};
    return namesOf(zxpol_enumClassification, hive.get(), "the classifications");
}

Action readAction(const ClassificationHandle& classification, const std::string& name, const std::string& where) {
    int result = ZXPOL_S_OK;
    const ActionHandle handle(zxpol_openAction(classification.get(), name.c_str(), &result));
    _ZxPolActionAttr attr{};
    zxpol_getActionAttrib(handle.get(), &attr, &result);
    const KeyHandle settingKey(attr.setting);
    require(result, "cannot read action " + inQuotes(name, kMaxName) + " of " + where);
    return {name, attr.displayName, attr.comment, attr.actionType, readStoredSetting(settingKey.get())};
}

Classification readClassification(const ClassificationHiveHandle& hive, const std::string& name) {
    const std::string where = classificationText(name);
    int result = ZXPOL_S_OK;
    const ClassificationHandle handle(zxpol_openClassification(hive.get(), name.c_str(), &result));
    _ZxPolCommAttrib attr{};
    zxpol_getClassificationAttrib(handle.get(), &attr, &result);
    require(result, "cannot read " + where);
    Classification classification{name, attr.displayName, attr.comment, {}};
    for (const std::string& action : namesOf(zxpol_enumAction, handle.get(), "the actions of " + where))
        classification.actions.push_back(readAction(handle, action, where));
    return classification;
}

}  // namespace

std::string classificationText(const std::string& name) {
    return "classification " + inQuotes(name, kMaxName);
}

std::vector<std::string> readClassificationNames(const Store& store) {
    return namesIn(openHive(store));
}

std::vector<Classification> readStoredClassifications(const Store& store) {
    std::vector<Classification> classifications;
    const ClassificationHiveHandle hive = openHive(store);
    for (const std::string& name : namesIn(hive))
        classifications.push_back(readClassification(hive, name));
    return classifications;
}

}  // namespace tool
