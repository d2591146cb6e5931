#include <algorithm>
#include <map>
#include <set>

#include "change/apply_context.h"
#include "difference/attribute_differences.h"
#include "difference/order_plan.h"
#include "output/text.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

// Counts what goes with a deleted rule.
void countBelow(const Rule& rule, size_t& rules, size_t& tasks) {
    tasks += rule.tasks.size();
    rules += rule.rules.size();
    for (const Rule& child : rule.rules)
        countBelow(child, rules, tasks);
}

class RuleApplier {
public:
    RuleApplier(ApplyContext& context, const RuleHandle& handle, std::string path, std::string key)
        : _context(context), _handle(handle), _path(std::move(path)), _key(std::move(key)) {}

    // Makes `wanted` of `current`. A new rule was logged already, so that its details are not.
    void run(const Rule& current, const Rule& wanted, bool isNew) {
        // A match type other than 0 locks the rule's conditions, and lets nobody make rules below it.
        int32_t presentType = current.matchType;
        if (presentType != 0 && (wanted.matchType == 0 || hasNewChildren(current, wanted))) {
            writeAttributes(wanted, 0);
            presentType = 0;
        }
        std::vector<std::string> details = attributeDifferences(current, wanted);
        const bool hasOtherAttributes = !details.empty();
        if (presentType == 0) append(details, applyConditions(_context, _handle, _path, current, wanted));
        applyTasks(_context, _handle, _path, current, wanted);
        append(details, applyInactiveMarks(_context, _handle, _path, _key, current, wanted));
        if (!isNew && !details.empty()) _context.changes.add(Change::Kind::Changed, "rule", _path, details);
        applyChildren(current, wanted);
        if (hasOtherAttributes || presentType != wanted.matchType) writeAttributes(wanted, wanted.matchType);
        _context.progress.step();
    }

private:
    static void append(std::vector<std::string>& to, const std::vector<std::string>& from) {
        to.insert(to.end(), from.begin(), from.end());
    }

    static bool hasNewChildren(const Rule& current, const Rule& wanted) {
        std::set<std::string> names;
        for (const Rule& child : current.rules)
            names.insert(child.name);
        return std::any_of(wanted.rules.begin(), wanted.rules.end(),
                           [&](const Rule& child) { return names.count(child.name) == 0; });
    }

    void writeAttributes(const Rule& wanted, int32_t matchType) {
        const _ZxPolRuleAttr attr = recordOf(wanted, matchType);
        int result = ZXPOL_S_OK;
        zxpol_setRuleAttrib(_handle.get(), &attr, &result);
        require(result, "cannot change rule " + oneLine(_path));
    }

    static _ZxPolRuleAttr recordOf(const Rule& rule, int32_t matchType) {
        _ZxPolRuleAttr attr{};
        copyText(attr.displayName, rule.displayName);
        copyText(attr.comment, rule.comment);
        attr.matchType = matchType;
        return attr;
    }

    void applyChildren(const Rule& current, const Rule& wanted) {
        std::vector<std::string> wantedNames;
        for (const Rule& child : wanted.rules)
            wantedNames.push_back(child.name);
        const std::set<std::string> isWanted(wantedNames.begin(), wantedNames.end());
        std::map<std::string, const Rule*> kept;
        std::vector<std::string> keptNames;
        for (const Rule& child : current.rules) {
            if (isWanted.count(child.name) == 0) {
                deleteChild(child);
                continue;
            }
            kept[child.name] = &child;
            keptNames.push_back(child.name);
        }
        for (const OrderStep& step : planOrder(keptNames, wantedNames, _context.movedBelow(_path))) {
            if (step.isNew)
                createChild(wanted.rules[step.index], step.position);
            else
                moveChild(wanted.rules[step.index].name, step.position);
        }
        for (const Rule& child : wanted.rules)
            if (const auto found = kept.find(child.name); found != kept.end()) openAndRun(*found->second, child);
    }

    void deleteChild(const Rule& child) {
        const std::string path = childName(_path, child.name);
        size_t rules = 0;
        size_t tasks = 0;
        countBelow(child, rules, tasks);
        int result = ZXPOL_S_OK;
        zxpol_deleteRule(_handle.get(), child.name.c_str(), &result);
        require(result, "cannot delete rule " + oneLine(path));
        std::vector<std::string> details;
        if (rules != 0) details.push_back("with rules below it: " + std::to_string(rules));
        if (tasks != 0) details.push_back("with tasks: " + std::to_string(tasks));
        _context.changes.add(Change::Kind::Deleted, "rule", path, details);
    }

    // Makes a rule with attributes alone: the interface checks conditions against the parent's at creation, and takes
    // no other match type than 0.
    void createChild(const Rule& child, uint32_t position) {
        const std::string path = childName(_path, child.name);
        _ZxPolRuleAttr attr = recordOf(child, 0);
        attr.order = position;
        const unsigned char* noConditions[] = {nullptr};
        int result = ZXPOL_S_OK;
        const RuleHandle handle(zxpol_createRule(_handle.get(), child.name.c_str(), &attr, noConditions, &result));
        require(result, "cannot create rule " + oneLine(path));
        _context.changes.add(Change::Kind::Created, "rule", path);
        Rule made;
        made.displayName = child.displayName;
        made.comment = child.comment;
        RuleApplier(_context, handle, path, childRuleKey(_key, child.name)).run(made, child, true);
    }

    void moveChild(const std::string& name, uint32_t position) {
        const std::string path = childName(_path, name);
        int result = ZXPOL_S_OK;
        zxpol_setRuleOrder(_handle.get(), name.c_str(), position, &result);
        require(result, "cannot move rule " + oneLine(path));
        _context.changes.add(Change::Kind::Moved, "rule", path, {"to position " + std::to_string(position)});
    }

    void openAndRun(const Rule& current, const Rule& wanted) {
        const std::string path = childName(_path, wanted.name);
        int result = ZXPOL_S_OK;
        const RuleHandle handle(zxpol_openRule(_handle.get(), wanted.name.c_str(), &result));
        require(result, "cannot open rule " + oneLine(path));
        RuleApplier(_context, handle, path, childRuleKey(_key, wanted.name)).run(current, wanted, false);
    }

    ApplyContext& _context;
    const RuleHandle& _handle;
    std::string _path;
    std::string _key;
};

}  // namespace

void applyRootRule(ApplyContext& context, const RuleHandle& root, const Rule& current, const Rule& wanted) {
    RuleApplier(context, root, "\\", kRootRuleKey).run(current, wanted, false);
}

}  // namespace tool
