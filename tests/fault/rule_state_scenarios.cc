// The rule hive and rules in states that are not the usual ones.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome getStoredVersion(World& world) {
    Outcome outcome;
    outcome.answer = std::to_string(lib(zxpol_getVersion, world.store, &outcome.result));
    return outcome;
}

Outcome checkStoredVersion(World& world) {
    Outcome outcome;
    uint32_t version = 0;
    outcome.answer =
        std::to_string(lib(checkVersion, world.store, &outcome.result, &version)) + " " + std::to_string(version);
    return outcome;
}

// A handle may be refused for want of memory, and then there is none.
Outcome wrap(World& world) {
    Outcome outcome;
    _ZxPolComHandle* handle = lib(makeHandle, static_cast<void*>(&world), 77u);
    outcome.result = handle == nullptr ? ZXPOL_E_OUT_OF_MEMORY : ZXPOL_S_OK;
    delete handle;
    return outcome;
}

Outcome openRule(World& world, const char* path) {
    return opening(zxpol_closeRule, zxpol_openRuleByFullName, world.ruleHive, path);
}

Outcome openRoot(World& world) {
    return opening(zxpol_closeRule, zxpol_openRootRule, world.ruleHive);
}

Outcome openMissingChild(World& world) {
    return opening(zxpol_closeRule, zxpol_openRule, world.a, "None");
}

Outcome createInTheMiddle(World& world) {
    return createRule(world.root, "New", 2, {pairOf("(Dir)", "*"), pairOf("*@new.example", "(Far)")});
}

Outcome createBelowALeaf(World& world) {
    return onRule(world, "\\A\\B", [](_ZxPolComHandle* rule) {
        return createRule(rule, "New", 0, {pairOf("bob@a.example", "x@y.example")});
    });
}

Outcome createUncovered(World& world) {
    return createRule(world.a, "New", 0, {pairOf("eve@elsewhere.example", "*")});
}

Outcome createWithAnInvalidCondition(World& world) {
    return createRule(world.root, "New", 0, {pairOf("((", "*"), pairOf("*@new.example", "*")});
}

Outcome remove(World& world, const char* name) {
    return resultOf(zxpol_deleteRule, world.root, name);
}

Outcome removeLast(World& world) {
    return remove(world, "E");
}

Outcome removeMissing(World& world) {
    return remove(world, "None");
}

Outcome enumerateNone(World& world) {
    return onRule(world, "\\E", [](_ZxPolComHandle* rule) { return walkNames(rule, zxpol_enumRule); });
}

Outcome move(World& world, const char* name, uint32_t position) {
    return resultOf(zxpol_setRuleOrder, world.root, name, position);
}

Outcome moveNowhere(World& world) {
    return move(world, "D", 2);
}

Outcome moveMissing(World& world) {
    return move(world, "None", 1);
}

Outcome enumerate(World& world) {
    return walkNames(world.root, zxpol_enumRule);
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolRuleAttr attr{};
    lib(zxpol_getRuleAttrib, world.a, &attr, &outcome.result);
    if (ZX_SUCCESS(outcome.result) != 0) outcome.answer = attr.displayName + std::string("|") + attr.comment;
    return outcome;
}

Outcome setExclusive(World& world) {
    return resultOf(zxpol_setExclusiveFilterType, world.ruleHive, 26u, ZXPOL_FILTER_DESC_EXCLUSIVE);
}

Outcome removeMissingExclusive(World& world) {
    return resultOf(zxpol_removeExclusiveFilterType, world.ruleHive, 99u);
}

Outcome enumExclusive(World& world) {
    Outcome outcome;
    uint32_t filter = 0;
    ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
    lib(zxpol_enumExclusiveFilterType, world.ruleHive, 1u, &filter, &type, &outcome.result);
    outcome.answer = std::to_string(filter) + ":" + std::to_string(type);
    return outcome;
}

void loseVersion(World& world) {
    deleteStoredValue(world, "", "version");
}

void makeNewer(World& world) {
    setStoredNumber(world, "", "version", 0x02000000);
}

void loseRootComment(World& world) {
    deleteStoredValue(world, "Rule\\Mail", "comment");
}

void loseRootCondition(World& world) {
    deleteStoredValue(world, "Rule\\Mail", "condition1");
}

void losePosition(World& world) {
    deleteStoredValue(world, "Rule\\Mail\\rules\\D", "order");
}

void loseComment(World& world) {
    deleteStoredValue(world, "Rule\\Mail\\rules\\A", "comment");
}

void loseRoot(World& world) {
    int error = ZXPOL_S_OK;
    for (const char* rule : {"A", "D", "E"}) {
        error = ZXPOL_S_OK;
        zxpol_deleteRule(world.root, rule, &error);
    }
    for (const char* task : {"scan", "stamp"}) {
        error = ZXPOL_S_OK;
        zxpol_deleteTask(world.root, task, &error);
    }
    for (const char* key : {"rules", "tasks", "inactive"})
        deleteStoredKey(world, "Rule\\Mail", key);
    deleteStoredKey(world, "Rule", "Mail");
}

}  // namespace

const Scenarios& ruleStateScenarios() {
    const Sites version = because("version", {"setValue version"});
    const Sites newer = because("version", {"queryValue version"});
    const Sites rules = positionsOf({"A", "D", "E"});
    const Sites newRoot = because("attribute-unread", {"queryValue *"});
    static const Scenarios all = {
        {"OpenRuleHiveOfAStoreWithoutVersion", Start::policy, Retry::completes, openRuleHive, version, loseVersion},
        {"OpenRuleHiveOfANewerStore", Start::policy, Retry::stamped, openRuleHive, newer, makeNewer},
        {"OpenRuleHiveWithoutRoot", Start::policy, Retry::succeeds, openRuleHive, keysOfANewRule() + newRoot, loseRoot},
        {"OpenRuleHiveWhoseRootLacksItsComment", Start::policy, Retry::completes, openRuleHive, {}, loseRootComment},
        {"OpenRuleHiveWhoseRootLacksConditions", Start::policy, Retry::completes, openRuleHive, newRoot,
         loseRootCondition},
        {"GetVersionOfANewerStore", Start::policy, Retry::stamped, getStoredVersion, newer, makeNewer},
        {"CheckVersion", Start::policy, Retry::completes, checkStoredVersion, {}},
        {"CheckVersionOfAnEmptyStore", Start::emptyStore, Retry::completes, checkStoredVersion, version},
        {"MakeHandle", Start::emptyStore, Retry::completes, wrap, {}},
        {"OpenRuleByFullNameOfTheRoot",
         Start::policy,
         Retry::completes,
         [](World& world) { return openRule(world, "\\"); },
         {}},
        {"OpenRuleByFullNameThatIsMissing",
         Start::policy,
         Retry::completes,
         [](World& world) { return openRule(world, "\\A\\None"); },
         {}},
        {"OpenRootRuleThatIsMissing", Start::policy, Retry::completes, openRoot, {}, loseRoot},
        {"OpenRuleThatIsMissing", Start::policy, Retry::completes, openMissingChild, {}},
        {"CreateRuleInTheMiddle", Start::policy, Retry::succeeds, createInTheMiddle, rules + keysOfANewRule()},
        {"CreateRuleBelowALeaf", Start::policy, Retry::succeeds, createBelowALeaf, keysOfANewRule()},
        {"CreateRuleThatIsNotCovered", Start::policy, Retry::succeeds, createUncovered,
         positionsOf({"B", "C"}) + keysOfANewRule()},
        {"CreateRuleWithAnInvalidCondition", Start::policy, Retry::succeeds, createWithAnInvalidCondition,
         rules + keysOfANewRule()},
        {"DeleteLastRule", Start::policy, Retry::mayNotFind, removeLast,
         positionsOf({"A"}) + deletionOf({"rules", "tasks", "inactive"})},
        {"DeleteRuleThatIsMissing", Start::policy, Retry::mayNotFind, removeMissing, {}},
        {"EnumRuleOfALeaf", Start::policy, Retry::completes, enumerateNone, {}},
        {"EnumRuleWithoutPosition", Start::policy, Retry::completes, enumerate, positionsOf({"A", "E"}), losePosition},
        {"SetRuleOrderToItsOwn", Start::policy, Retry::completes, moveNowhere, positionsOf({"D"})},
        {"SetRuleOrderOfAMissingRule", Start::policy, Retry::completes, moveMissing, {}},
        {"SetRuleOrderOfARuleWithoutPosition", Start::policy, Retry::completes, moveNowhere, {}, losePosition},
        {"GetRuleAttribWithoutComment", Start::policy, Retry::completes, getAttrib, {}, loseComment},
        {"SetExclusiveFilterTypeAgain", Start::policy, Retry::completes, setExclusive, {}},
        {"RemoveExclusiveFilterTypeThatIsMissing", Start::policy, Retry::completes, removeMissingExclusive, {}},
        {"EnumOneExclusiveFilterType", Start::policy, Retry::completes, enumExclusive, {}},
    };
    return all;
}

}  // namespace zxtest
