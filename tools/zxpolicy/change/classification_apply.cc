#include <map>
#include <set>

#include "change/apply_context.h"
#include "difference/attribute_differences.h"
#include "difference/order_plan.h"
#include "output/text.h"
#include "policy/policy_check.h"
#include "stored/classification_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

_ZxPolCommAttrib recordOf(const Classification& classification) {
    _ZxPolCommAttrib attr{};
    copyText(attr.displayName, classification.displayName);
    copyText(attr.comment, classification.comment);
    return attr;
}

_ZxPolActionAttr recordOf(const Action& action) {
    _ZxPolActionAttr attr{};
    copyText(attr.displayName, action.displayName);
    copyText(attr.comment, action.comment);
    attr.actionType = action.actionType;
    return attr;
}

template <class Item>
std::map<std::string, const Item*> byName(const std::vector<Item>& items) {
    std::map<std::string, const Item*> found;
    for (const Item& item : items)
        found.emplace(item.name, &item);
    return found;
}

// Brings the actions of an open classification from what they are to what is wanted.
class ActionApplier {
public:
    ActionApplier(ApplyContext& context, const ClassificationHandle& handle, const std::string& classification)
        : _context(context), _handle(handle), _classification(classification) {}

    void run(const std::vector<Action>& current, const std::vector<Action>& wanted) {
        const std::map<std::string, const Action*> isWanted = byName(wanted);
        std::vector<std::string> keptNames;
        for (const Action& action : current) {
            if (isWanted.count(action.name) == 0)
                remove(action.name);
            else
                keptNames.push_back(action.name);
        }
        std::vector<std::string> wantedNames;
        wantedNames.reserve(wanted.size());
        for (const Action& action : wanted)
            wantedNames.push_back(action.name);
        for (const OrderStep& step : planOrder(keptNames, wantedNames, _context.movedBelow(_classification))) {
            if (step.isNew)
                create(wanted[step.index], step.position);
            else
                move(wanted[step.index].name, step.position);
        }
        const std::map<std::string, const Action*> before = byName(current);
        for (const Action& action : wanted)
            if (const auto found = before.find(action.name); found != before.end()) change(*found->second, action);
    }

private:
    std::string nameOf(const std::string& action) const { return _classification + "\\" + action; }
    std::string textOf(const std::string& action) const {
        return "action " + inQuotes(action, kMaxName) + " of " + classificationText(_classification);
    }

    void remove(const std::string& name) {
        int result = ZXPOL_S_OK;
        zxpol_deleteAction(_handle.get(), name.c_str(), &result);
        require(result, "cannot delete " + textOf(name));
        _context.changes.add(Change::Kind::Deleted, "action", nameOf(name));
    }

    void create(const Action& action, uint32_t position) {
        _ZxPolActionAttr attr = recordOf(action);
        attr.order = position;
        int result = ZXPOL_S_OK;
        const ActionHandle handle(zxpol_createAction(_handle.get(), action.name.c_str(), &attr, &result));
        require(result, "cannot create " + textOf(action.name));
        applyContent(handle, {}, action);
        _context.changes.add(Change::Kind::Created, "action", nameOf(action.name));
    }

    void move(const std::string& name, uint32_t position) {
        int result = ZXPOL_S_OK;
        zxpol_setActionOrder(_handle.get(), name.c_str(), position, &result);
        require(result, "cannot move " + textOf(name));
        _context.changes.add(Change::Kind::Moved, "action", nameOf(name), {"to position " + std::to_string(position)});
    }

    void change(const Action& current, const Action& wanted) {
        if (current == wanted) return;
        std::vector<std::string> details = attributeDifferences(current, wanted);
        int result = ZXPOL_S_OK;
        const ActionHandle handle(zxpol_openAction(_handle.get(), wanted.name.c_str(), &result));
        const _ZxPolActionAttr attr = recordOf(wanted);
        if (!details.empty()) zxpol_setActionAttrib(handle.get(), &attr, &result);
        require(result, "cannot change " + textOf(wanted.name));
        for (const std::string& detail : applyContent(handle, current, wanted))
            details.push_back(detail);
        _context.changes.add(Change::Kind::Changed, "action", nameOf(wanted.name), details);
    }

    std::vector<std::string> applyContent(const ActionHandle& handle, const Action& current, const Action& wanted) {
        if (current.setting == wanted.setting) return {};
        _ZxPolActionAttr attr{};
        int result = ZXPOL_S_OK;
        zxpol_getActionAttrib(handle.get(), &attr, &result);
        const KeyHandle setting(attr.setting);
        require(result, "cannot open the settings of " + textOf(wanted.name));
        return applySetting(setting.get(), textOf(wanted.name), current.setting, wanted.setting);
    }

    ApplyContext& _context;
    const ClassificationHandle& _handle;
    const std::string& _classification;
};

class ClassificationApplier {
public:
    ClassificationApplier(ApplyContext& context, const ClassificationHiveHandle& hive)
        : _context(context), _hive(hive) {}

    void remove(const Classification& classification) {
        int result = ZXPOL_S_OK;
        zxpol_deleteClassification(_hive.get(), classification.name.c_str(), &result);
        require(result, "cannot delete " + classificationText(classification.name));
        std::vector<std::string> details;
        if (!classification.actions.empty())
            details.push_back("with actions: " + std::to_string(classification.actions.size()));
        _context.changes.add(Change::Kind::Deleted, "classification", classification.name, details);
    }

    void create(const Classification& classification) {
        const std::string& name = classification.name;
        const _ZxPolCommAttrib attr = recordOf(classification);
        int result = ZXPOL_S_OK;
        const ClassificationHandle handle(zxpol_createClassification(_hive.get(), name.c_str(), &attr, &result));
        require(result, "cannot create " + classificationText(name));
        _context.changes.add(Change::Kind::Created, "classification", name);
        ActionApplier(_context, handle, name).run({}, classification.actions);
    }

    void change(const Classification& current, const Classification& wanted) {
        if (current == wanted) return;
        const std::string& name = wanted.name;
        const std::vector<std::string> details = attributeDifferences(current, wanted);
        int result = ZXPOL_S_OK;
        const ClassificationHandle handle(zxpol_openClassification(_hive.get(), name.c_str(), &result));
        const _ZxPolCommAttrib attr = recordOf(wanted);
        if (!details.empty()) zxpol_setClassificationAttrib(handle.get(), &attr, &result);
        require(result, "cannot change " + classificationText(name));
        if (!details.empty()) _context.changes.add(Change::Kind::Changed, "classification", name, details);
        ActionApplier(_context, handle, name).run(current.actions, wanted.actions);
    }

private:
    ApplyContext& _context;
    const ClassificationHiveHandle& _hive;
};

}  // namespace

void applyClassifications(ApplyContext& context, const Policy& current, const Policy& wanted) {
    // The store of a policy without classifications gets no key for them.
    if (current.classifications.empty() && wanted.classifications.empty()) return;
    int result = ZXPOL_S_OK;
    const ClassificationHiveHandle hive(zxpol_openClassificationHive(context.store.key(), &result));
    require(result, "cannot open the classifications in " + oneLine(context.store.location()));
    ClassificationApplier apply(context, hive);
    const auto isWanted = byName(wanted.classifications);
    const auto before = byName(current.classifications);
    for (const Classification& classification : current.classifications)
        if (isWanted.count(classification.name) == 0) apply.remove(classification);
    for (const Classification& classification : wanted.classifications) {
        if (const auto found = before.find(classification.name); found != before.end())
            apply.change(*found->second, classification);
        else
            apply.create(classification);
    }
}

}  // namespace tool
