// The commands that change classifications and actions.
#include <algorithm>
#include <tuple>

#include "change/classification_commands.h"
#include "stored/classification_store_reader.h"
#include "stored/policy_path.h"
#include "stored/reference_finder.h"
#include "stored/store.h"

namespace tool {

namespace {

// The names that the options give: of the classification and of the action, which may be empty.
struct Names {
    explicit Names(const ClassificationEditOptions& options) {
        std::tie(classification, action) = splitActionName(options.name);
    }
    bool isAction() const { return !action.empty(); }
    std::string text() const {
        return isAction() ? actionText(classification, action) : classificationText(classification);
    }

    std::string classification;
    std::string action;
};

void requireNoActionOptions(const ClassificationEditOptions& options) {
    if (options.actionType || options.position || !options.settings.set.empty() || !options.settings.removed.empty())
        throw UsageError(classificationText(options.name) +
                         " has no type, position or settings; its actions have: name one as CLASSIFICATION\\ACTION");
}

void editAction(Action& action, const ClassificationEditOptions& options, const Names& names) {
    editTexts(action, options.texts);
    action.actionType = options.actionType.value_or(action.actionType);
    editSetting(action.setting, options.settings, names.text());
}

void add(Policy& policy, const ClassificationEditOptions& options, const Names& names) {
    if (names.isAction()) {
        Action action;
        action.name = names.action;
        editAction(action, options, names);
        addNamed(findClassification(policy, names.classification).actions, action, options.position, names.text());
        return;
    }
    requireNoActionOptions(options);
    Classification classification;
    classification.name = names.classification;
    editTexts(classification, options.texts);
    addNamed(policy.classifications, classification, std::nullopt, names.text());
}

void set(Policy& policy, const ClassificationEditOptions& options, const Names& names) {
    if (names.isAction()) return editAction(findAction(policy, names.classification, names.action), options, names);
    requireNoActionOptions(options);
    editTexts(findClassification(policy, names.classification), options.texts);
}

// Throws a PolicyError when there is no such classification, or the first rule whose outcomes name it.
void requireNoReference(const Store& store, const std::string& name) {
    const std::vector<std::string> names = readClassificationNames(store);
    if (std::find(names.begin(), names.end(), name) == names.end()) failForMissing(classificationText(name));
    const std::vector<ReferringRule> rules = findReferences(store, ZXPOL_REF_CLASSIFICATION, name).rules;
    if (rules.empty()) return;
    const std::string others = rules.size() == 1 ? "" : " and " + grouped(rules.size() - 1) + " more";
    throw PolicyError("outcomes of " + ruleText(rules.front().path) + others + " name " + classificationText(name) +
                      "; zxpolicy refs classification shows them; --allow-dangling removes it all the same");
}

}  // namespace

void runClassificationAdd(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err) {
    editPolicy(
        options, [&](Policy& policy) { add(policy, options, Names(options)); }, out, err);
}

void runClassificationSet(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err) {
    editPolicy(
        options, [&](Policy& policy) { set(policy, options, Names(options)); }, out, err);
}

void runClassificationMove(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err) {
    const Names names(options);
    if (!names.isAction()) throw UsageError("classifications have no order; name an action as CLASSIFICATION\\ACTION");
    const auto move = [&](Policy& policy) {
        moveNamed(findClassification(policy, names.classification).actions, names.action, options.position,
                  names.text());
    };
    EditOptions asked = options;
    asked.moved = options.name;
    editPolicy(asked, move, out, err);
}

void runClassificationRemove(const ClassificationEditOptions& options, std::ostream& out, std::ostream& err) {
    const Names names(options);
    const auto remove = [&](Policy& policy) {
        if (names.isAction())
            return removeNamed(findClassification(policy, names.classification).actions, names.action, names.text());
        removeNamed(policy.classifications, names.classification, names.text());
    };
    const auto check = [&](const Store& store) {
        if (!names.isAction() && !options.allowsDangling) requireNoReference(store, names.classification);
    };
    editPolicy(options, remove, out, err, check);
}

}  // namespace tool
