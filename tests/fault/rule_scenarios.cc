// The rule hive and rules.
#include "fault/scenario.h"

namespace zxtest {

namespace {

Outcome openHive(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = lib(zxpol_openRuleHive, world.store, 0, &error);
    settle(outcome, hive, error, zxpol_closeRuleHive);
    return outcome;
}

Outcome openHiveOfOtherType(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = lib(zxpol_openRuleHive, world.store, 1, &error);
    settle(outcome, hive, error, zxpol_closeRuleHive);
    return outcome;
}

Outcome getVersion(World& world) {
    Outcome outcome;
    outcome.answer = std::to_string(lib(zxpol_getVersion, world.store, &outcome.result));
    return outcome;
}

Outcome openRoot(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = lib(zxpol_openRootRule, world.ruleHive, &error);
    settle(outcome, rule, error, zxpol_closeRule);
    return outcome;
}

Outcome openByFullName(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = lib(zxpol_openRuleByFullName, world.ruleHive, "\\A\\B\\", &error);
    settle(outcome, rule, error, zxpol_closeRule);
    return outcome;
}

Outcome setExclusive(World& world) {
    Outcome outcome;
    lib(zxpol_setExclusiveFilterType, world.ruleHive, 40u, ZXPOL_FILTER_DESC_EXCLUSIVE, &outcome.result);
    return outcome;
}

Outcome removeExclusive(World& world) {
    Outcome outcome;
    lib(zxpol_removeExclusiveFilterType, world.ruleHive, 26u, &outcome.result);
    return outcome;
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

Outcome create(World& world, const char* name, uint32_t order, const _ZxPolAddrPairCond& pair) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr(name, order);
    CondList conditions{pair};
    _ZxPolComHandle* rule = lib(zxpol_createRule, world.root, name, &attr, conditions.get(), &error);
    settle(outcome, rule, error, zxpol_closeRule);
    if (ZX_SUCCESS(error) != 0) outcome.answer += " at " + std::to_string(attr.order);
    return outcome;
}

Outcome createLast(World& world) {
    return create(world, "New", 0, pairOf("*@new.example", "*"));
}

Outcome createFirst(World& world) {
    return create(world, "New", 1, pairOf("*@new.example", "*"));
}

Outcome createExisting(World& world) {
    return create(world, "D", 1, pairOf("*@d.example", "*"));
}

Outcome open(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = lib(zxpol_openRule, world.a, "B", &error);
    settle(outcome, rule, error, zxpol_closeRule);
    return outcome;
}

Outcome remove(World& world) {
    Outcome outcome;
    lib(zxpol_deleteRule, world.root, "A", &outcome.result);
    return outcome;
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
    Outcome outcome;
    lib(zxpol_setRuleOrder, world.root, "E", 1u, &outcome.result);
    return outcome;
}

Outcome moveDown(World& world) {
    Outcome outcome;
    lib(zxpol_setRuleOrder, world.root, "A", 99u, &outcome.result);
    return outcome;
}

// A missing version is stamped and an unreadable one replaced; neither is reported.
const Sites kVersion = {"queryValue version", "setValue version", "beginUpdate", "endUpdate"};

}  // namespace

const std::vector<Scenario>& ruleScenarios() {
    static const std::vector<Scenario> all = {
        {"OpenRuleHiveOfAnEmptyStore", Start::emptyStore, Retry::succeeds, openHive,
         kVersion + keysOfANewRule() + Sites{"queryValue matchType"}},
        {"OpenRuleHive", Start::policy, Retry::succeeds, openHive, {}},
        {"OpenRuleHiveOfAnotherType", Start::emptyStore, Retry::succeeds, openHiveOfOtherType, kVersion},
        {"GetVersionOfAnEmptyStore", Start::emptyStore, Retry::succeeds, getVersion, kVersion},
        {"GetVersion", Start::policy, Retry::succeeds, getVersion, kVersion},
        {"OpenRootRule", Start::policy, Retry::succeeds, openRoot, {}},
        {"OpenRuleByFullName", Start::policy, Retry::succeeds, openByFullName, {}},
        {"SetExclusiveFilterType", Start::policy, Retry::succeeds, setExclusive, {}},
        {"RemoveExclusiveFilterType", Start::policy, Retry::mayNotFind, removeExclusive, {}},
        {"EnumExclusiveFilterType", Start::policy, Retry::succeeds, enumExclusive, {}},
        {"CreateRuleAsLast", Start::policy, Retry::succeeds, createLast,
         positionsOf({"A", "D", "E"}) + keysOfANewRule()},
        {"CreateRuleAsFirst", Start::policy, Retry::succeeds, createFirst,
         positionsOf({"A", "D", "E"}) + keysOfANewRule()},
        {"CreateRuleThatExists", Start::policy, Retry::succeeds, createExisting,
         positionsOf({"A", "D", "E"}) + unreadConditions()},
        {"OpenRule", Start::policy, Retry::succeeds, open, {}},
        {"DeleteRule", Start::policy, Retry::mayNotFind, remove, positionsOf({"A", "D", "E"})},
        {"EnumRule", Start::policy, Retry::succeeds, enumerate, positionsOf({"A", "D", "E"})},
        {"GetRuleAttrib", Start::policy, Retry::succeeds, getAttrib, {"queryValue displayName", "queryValue order"}},
        {"SetRuleAttrib", Start::policy, Retry::succeeds, setAttrib, {}},
        {"SetRuleOrderUpwards", Start::policy, Retry::succeeds, moveUp, positionsOf({"A", "D", "E"})},
        {"SetRuleOrderDownwards", Start::policy, Retry::succeeds, moveDown, positionsOf({"A", "D", "E"})},
    };
    return all;
}

}  // namespace zxtest
