#include "stored/reference_finder.h"

#include <algorithm>

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_file.h"
#include "policy/policy_references.h"
#include "stored/names_of.h"
#include "stored/policy_store_reader.h"

namespace tool {

namespace {

std::optional<std::string> askChecker(const Store& store, ZxPolRefEntity entity, const std::string& name) {
    for (std::string path(1024, '\0');;) {
        auto size = static_cast<uint32_t>(path.size());
        int result = ZXPOL_S_OK;
        const int isReferred = zxpol_checkReferInRule(store.key(), entity, name.c_str(), path.data(), &size, &result);
        // The buffer must be larger than the path with its NUL, whose size this is.
        if (hasReason(result, kReasonTooSmall) && size >= path.size()) {
            path.resize(size_t{size} + 1);
            continue;
        }
        require(result, "cannot look for references to " + inQuotes(name, 255));
        if (isReferred == 0) return std::nullopt;
        return path.c_str();
    }
}

// Looks for the name in rules, one after the other.
class RuleReader {
public:
    RuleReader(ZxPolRefEntity entity, const std::string& name) : _entity(entity), _folded(lowerCase(name)) {}

    // `key` is the rule's own in the store.
    std::vector<ReferringPlace> placesIn(const RuleHandle& rule, const KeyHandle& key, const std::string& path) const {
        return _entity == ZXPOL_REF_ADDRLIST ? sidesOf(rule, key, path) : outcomesOf(rule, key, path);
    }

private:
    bool isName(const std::string& text) const { return lowerCase(text) == _folded; }

    std::vector<ReferringPlace> sidesOf(const RuleHandle& rule, const KeyHandle& key, const std::string& path) const {
        const std::string where = oneLine(path);
        _ZxPolRuleAttr attr{};
        int result = ZXPOL_S_OK;
        zxpol_getRuleAttrib(rule.get(), &attr, &result);
        require(result, "cannot read rule " + where);
        std::vector<ReferringPlace> places;
        uint32_t number = 0;
        for (const Condition& condition : readAllConditions(rule, key, where)) {
            ++number;
            addSide(places, number, "sender", condition.sender);
            addSide(places, number, "receiver", condition.receiver);
        }
        return places;
    }

    void addSide(std::vector<ReferringPlace>& places, uint32_t number, const char* side,
                 const std::string& text) const {
        const std::optional<std::string> list = referredList(text);
        if (list && isName(*list)) places.push_back({number, side, "", "", text, *list});
    }

    std::vector<ReferringPlace> outcomesOf(const RuleHandle& rule, const KeyHandle& key,
                                           const std::string& path) const {
        std::vector<ReferringPlace> places;
        const KeyHandle tasks = openRawKey(key.get(), "tasks");
        const std::string what = "the tasks of rule " + oneLine(path);
        for (const std::string& task : allNamesOf(zxpol_enumTask, rule.get(), tasks, what)) {
            const std::string fullName = childName(path, task);
            int result = ZXPOL_S_OK;
            const TaskHandle handle(zxpol_openTask(rule.get(), task.c_str(), &result));
            require(result, "cannot open task " + oneLine(fullName));
            for (const auto& [name, outcome] : readStoredOutcomes(handle, oneLine(fullName)))
                if (isName(outcome.text)) places.push_back({0, "", fullName, name, outcome.text, outcome.text});
        }
        return places;
    }

    ZxPolRefEntity _entity;
    std::string _folded;
};

// A rule whose children are being walked.
struct OpenRule {
    RuleHandle handle;
    KeyHandle key;
    std::string path;
    std::vector<std::string> children;
    size_t next = 0;
};

OpenRule openRule(RuleHandle handle, KeyHandle key, const std::string& path) {
    OpenRule rule{std::move(handle), std::move(key), path, {}, 0};
    rule.children = allNamesOf(zxpol_enumRule, rule.handle.get(), openRawKey(rule.key.get(), "rules"),
                               "the rules below rule " + oneLine(path));
    return rule;
}

// Walks the rules, all below a rule before it. Keeps the open ones in a list: another program may have nested them to
// any depth.
std::vector<ReferringRule> walk(const Store& store, const RuleReader& reader) {
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(store.key(), 0, &result));
    RuleHandle root(zxpol_openRootRule(hive.get(), &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
    std::vector<ReferringRule> found;
    std::vector<OpenRule> open;
    open.push_back(openRule(std::move(root), openRawKey(store.key(), kRootRuleKey), "\\"));
    while (!open.empty()) {
        OpenRule& rule = open.back();
        if (rule.next < rule.children.size()) {
            const std::string& name = rule.children[rule.next++];
            const std::string path = childName(rule.path, name);
            RuleHandle child(zxpol_openRule(rule.handle.get(), name.c_str(), &result));
            require(result, "cannot open rule " + oneLine(path));
            open.push_back(openRule(std::move(child), openRawKey(rule.key.get(), "rules\\" + name), path));
            continue;
        }
        std::vector<ReferringPlace> places = reader.placesIn(rule.handle, rule.key, rule.path);
        if (!places.empty()) found.push_back({rule.path, std::move(places)});
        open.pop_back();
    }
    return found;
}

// The checker passes over an outcome's text that is too long for a name.
bool mayCheckerFind(const ReferringRule& rule) {
    return std::any_of(rule.places.begin(), rule.places.end(), [](const ReferringPlace& place) {
        return place.outcome.empty() || place.text.size() <= kMaxName;
    });
}

}  // namespace

References findReferences(const Store& store, ZxPolRefEntity entity, const std::string& name) {
    References references{askChecker(store, entity, name), walk(store, RuleReader(entity, name))};
    const auto first = std::find_if(references.rules.begin(), references.rules.end(), mayCheckerFind);
    const bool isFound = first != references.rules.end();
    if (isFound ? references.checker != first->path : references.checker.has_value())
        throw StoreError("cannot read all of the rules for references to " + inQuotes(name, 255) +
                             ": the library's reference checker answers " +
                             (references.checker ? "rule " + oneLine(*references.checker) : "none") +
                             " where the rules say " + (isFound ? "rule " + oneLine(first->path) : "none"),
                         ZXPOL_E_NO_MORE_ITEMS);
    if (isFound) std::rotate(references.rules.begin(), first, first + 1);
    return references;
}

}  // namespace tool
