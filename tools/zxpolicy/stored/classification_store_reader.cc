#include "stored/classification_store_reader.h"

#include "output/text.h"
#include "policy/policy_check.h"
#include "stored/names_of.h"
#include "stored/raw_key.h"
#include "stored/setting_store_reader.h"

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

// The values are read from the store itself: the library passes over a name that it cannot read.
Action readAction(const KeyHandle& actions, const std::string& name, const std::string& owner) {
    const std::string where = "action " + inQuotes(name, kMaxName) + " of " + owner;
    const KeyHandle key = openRawKey(actions.get(), name);
    return {name, rawText(key.get(), "displayName", where), rawText(key.get(), "comment", where),
            rawNumber(key.get(), "actionType", where), readStoredSetting(openRawKey(key.get(), "setting").get())};
}

Classification readClassification(const Store& store, const ClassificationHiveHandle& hive, const std::string& name) {
    const std::string where = classificationText(name);
    int result = ZXPOL_S_OK;
    const ClassificationHandle handle(zxpol_openClassification(hive.get(), name.c_str(), &result));
    _ZxPolCommAttrib attr{};
    zxpol_getClassificationAttrib(handle.get(), &attr, &result);
    require(result, "cannot read " + where);
    Classification classification{name, attr.displayName, attr.comment, {}};
    const KeyHandle actions = openRawKey(store.key(), "Classification\\" + name + "\\actions");
    for (const std::string& action : allNamesOf(zxpol_enumAction, handle.get(), actions, "the actions of " + where))
        classification.actions.push_back(readAction(actions, action, where));
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
        classifications.push_back(readClassification(store, hive, name));
    return classifications;
}

}  // namespace tool
