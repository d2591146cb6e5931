// The rule hive and rules.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome openHiveOfOtherType(World& world) {
    return opening(zxpol_closeRuleHive, zxpol_openRuleHive, world.store, 1);
}

Outcome getVersion(World& world) {
    Outcome outcome;
    outcome.answer = std::to_string(lib(zxpol_getVersion, world.store, &outcome.result));
    return outcome;
}

Outcome openRoot(World& world) {
    return opening(zxpol_closeRule, zxpol_openRootRule, world.ruleHive);
}

Outcome openByFullName(World& world) {
    return opening(zxpol_closeRule, zxpol_openRuleByFullName, world.ruleHive, "\\A\\B\\");
}

Outcome setExclusive(World& world) {
    return resultOf(zxpol_setExclusiveFilterType, world.ruleHive, 40u, ZXPOL_FILTER_DESC_EXCLUSIVE);
}

Outcome removeExclusive(World& world) {
    return resultOf(zxpol_removeExclusiveFilterType, world.ruleHive, 26u);
}

Outcome enumExclusive(World& world) {
    Outcome outcome;
    for (uint32_t index = 0;; ++index) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        lib(zxpol_enumExclusiveFilterType, world.ruleHive, index, &filter, &type, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += std::to_string(filter) + ":" + std::to_string(type) + "|";
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
}

Outcome createLast(World& world) {
    return createRule(world.root, "New", 0, {pairOf("*@new.example", "*")});
}

Outcome createFirst(World& world) {
    return createRule(world.root, "New", 1, {pairOf("*@new.example", "*")});
}

Outcome createExisting(World& world) {
    return createRule(world.root, "D", 1, {pairOf("*@d.example", "*")});
}

Outcome open(World& world) {
    return opening(zxpol_closeRule, zxpol_openRule, world.a, "B");
}

Outcome remove(World& world) {
    return resultOf(zxpol_deleteRule, world.root, "A");
}

Outcome enumerate(World& world) {
    return walkNames(world.root, zxpol_enumRule);
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolRuleAttr attr{};
    lib(zxpol_getRuleAttrib, world.a, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment + "|" + std::to_string(attr.order) + "|" +
                     std::to_string(attr.matchType);
    return outcome;
}

Outcome setAttrib(World& world) {
    Outcome outcome;
    const _ZxPolRuleAttr attr = ruleAttr("renamed");
    lib(zxpol_setRuleAttrib, world.a, &attr, &outcome.result);
    return outcome;
}

Outcome moveUp(World& world) {
    return resultOf(zxpol_setRuleOrder, world.root, "E", 1u);
}

Outcome moveDown(World& world) {
    return resultOf(zxpol_setRuleOrder, world.root, "A", 99u);
}

// A missing version is stamped and an unreadable one replaced; neither is reported.
const Sites kVersion = because("version", {"setValue version"});

}  // namespace

const std::vector<Scenario>& ruleScenarios() {
    static const std::vector<Scenario> all = {
        {"OpenRuleHiveOfAnEmptyStore", Start::emptyStore, Retry::succeeds, openRuleHive,
         kVersion + keysOfANewRule() + because("attribute-unread", {"queryValue matchType"})},
        {"OpenRuleHive", Start::policy, Retry::completes, openRuleHive, {}},
        {"OpenRuleHiveOfAnotherType", Start::emptyStore, Retry::completes, openHiveOfOtherType, kVersion},
        {"GetVersionOfAnEmptyStore", Start::emptyStore, Retry::completes, getVersion, kVersion},
        {"GetVersion", Start::policy, Retry::completes, getVersion, {}},
        {"OpenRootRule", Start::policy, Retry::completes, openRoot, {}},
        {"OpenRuleByFullName", Start::policy, Retry::completes, openByFullName, {}},
        {"SetExclusiveFilterType", Start::policy, Retry::completes, setExclusive, {}},
        {"RemoveExclusiveFilterType", Start::policy, Retry::mayNotFind, removeExclusive, {}},
        {"EnumExclusiveFilterType", Start::policy, Retry::completes, enumExclusive, {}},
        {"CreateRuleAsLast", Start::policy, Retry::succeeds, createLast,
         positionsOf({"A", "D", "E"}) + keysOfANewRule()},
        {"CreateRuleAsFirst", Start::policy, Retry::succeeds, createFirst,
         positionsOf({"A", "D", "E"}) + keysOfANewRule()},
        {"CreateRuleThatExists", Start::policy, Retry::succeeds, createExisting, because("position", {"openKey D"})},
        {"OpenRule", Start::policy, Retry::completes, open, {}},
        {"DeleteRule", Start::policy, Retry::mayNotFind, remove,
         positionsOf({"D", "E"}) +
             deletionOf({"B", "C", "rules", "tasks", "inactive", "t", "u", "v", "deep", "setting", "Classification"})},
        {"EnumRule", Start::policy, Retry::completes, enumerate, positionsOf({"A", "D", "E"})},
        {"GetRuleAttrib", Start::policy, Retry::completes, getAttrib,
         because("attribute-unread", {"queryValue displayName", "queryValue order"})},
        {"SetRuleAttrib", Start::policy, Retry::completes, setAttrib, {}},
        {"SetRuleOrderUpwards", Start::policy, Retry::succeeds, moveUp, positionsOf({"A", "D", "E"})},
        {"SetRuleOrderDownwards", Start::policy, Retry::succeeds, moveDown, positionsOf({"A", "D", "E"})},
    };
    return all;
}

}  // namespace zxtest
