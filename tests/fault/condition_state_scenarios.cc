// Conditions in states that are not the usual ones: none, several levels, other results.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome add(_ZxPolComHandle* rule, CondList conditions, ZxPolCondCheck mode) {
    Outcome outcome;
    _ZxPolErrorCond** list = nullptr;
    lib(zxpol_addConditionEx, rule, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

Outcome remove(_ZxPolComHandle* rule, CondList conditions, ZxPolCondCheck mode) {
    Outcome outcome;
    _ZxPolErrorCond** list = nullptr;
    lib(zxpol_removeConditionEx, rule, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

// Without indices all conditions are replaced.
Outcome update(_ZxPolComHandle* rule, const std::vector<uint32_t>& indices, CondList conditions, ZxPolCondCheck mode) {
    Outcome outcome;
    _ZxPolErrorCond** list = nullptr;
    const uint32_t* which = indices.empty() ? nullptr : indices.data();
    lib(zxpol_updateConditionEx, rule, which, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

constexpr ZxPolCondCheck kNone = ZXPOL_COND_CHECK_NONE;
constexpr ZxPolCondCheck kCheck = ZXPOL_COND_CHECK_HIERARCHY;

Outcome addToNone(World& world) {
    return add(world.a, {pairOf("*@c.example", "*")}, kNone);
}

Outcome addOneThatIsInvalid(World& world) {
    return add(world.a, {pairOf("*@c.example", "*"), pairOf("((", "*"), pairOf("dan@d.example", "*")}, kNone);
}

Outcome addBelow(World& world) {
    return onRule(world, "\\A\\B", [](_ZxPolComHandle* rule) {
        return add(rule, {pairOf("carol@a.example", "*"), pairOf("(Far)", "*")}, kCheck);
    });
}

Outcome addToRoot(World& world) {
    return add(world.root, {pairOf("*@c.example", "*")}, kCheck);
}

Outcome removeMissing(World& world) {
    return remove(world.a, {pairOf("*@none.example", "*")}, kNone);
}

Outcome removeLast(World& world) {
    Outcome outcome;
    const _ZxPolAddrPairCond pair = pairOf("bob@b.example", "*@x.example");
    lib(zxpol_removeCondition, world.a, bytesOf(pair), &outcome.result);
    return outcome;
}

Outcome removeAll(World& world) {
    return remove(world.a, {pairOf("bob@b.example", "*@x.example"), pairOf("*@a.example", "*")}, kCheck);
}

Outcome removeOneAndMissOne(World& world) {
    return remove(world.a, {pairOf("*@a.example", "*"), pairOf("*@none.example", "*")}, kNone);
}

Outcome updateToAnother(World& world) {
    return update(world.a, {0}, {pairOf("bob@b.example", "*@x.example")}, kNone);
}

Outcome updateBoth(World& world) {
    return update(world.a, {1, 0}, {pairOf("two@b.example", "*"), pairOf("one@b.example", "*")}, kNone);
}

Outcome updateNotCovered(World& world) {
    return onRule(world, "\\A\\C", [](_ZxPolComHandle* rule) {
        return update(rule, {0}, {pairOf("eve@elsewhere.example", "*")}, kCheck);
    });
}

Outcome replaceByNone(World& world) {
    return update(world.a, {}, {}, kCheck);
}

Outcome replaceByMore(World& world) {
    return update(world.a, {}, {pairOf("x@a.example", "*"), pairOf("y@a.example", "*"), pairOf("z@a.example", "*")},
                  kNone);
}

Outcome replaceBySomeInvalid(World& world) {
    return update(world.a, {}, {pairOf("((", "*"), pairOf("y@a.example", "*")}, kNone);
}

void loseConditions(World& world) {
    for (const char* name : {"condition1", "condition2"})
        deleteStoredValue(world, "Rule\\Mail\\rules\\A", name);
}

void makeOtherType(World& world) {
    setStoredNumber(world, "Rule\\Mail\\rules\\A", "matchType", 1);
}

// Gives \A\B a rule below it that depends on the same condition of \A.
void makeDeeper(World& world) {
    onRule(world, "\\A\\B", [](_ZxPolComHandle* rule) {
        int error = ZXPOL_S_OK;
        _ZxPolRuleAttr attr = ruleAttr("G");
        CondList conditions{pairOf("bob@a.example", "g@y.example")};
        zxpol_closeRule(zxpol_createRule(rule, "G", &attr, conditions.get(), &error), &error);
        return Outcome{};
    });
}

}  // namespace

const Scenarios& conditionStateScenarios() {
    const Sites below = positionsOf({"B", "C"}) + notFoundConditions() + takenBack();
    static const Scenarios all = {
        {"EnumConditionOfNone",
         Start::policy,
         Retry::completes,
         [](World& world) { return enumerateConditions(world.a); },
         {},
         loseConditions},
        {"EnumConditionOfAnotherMatchType",
         Start::policy,
         Retry::completes,
         [](World& world) { return enumerateConditions(world.a); },
         {},
         makeOtherType},
        {"EnumConditionOfTheRoot",
         Start::policy,
         Retry::completes,
         [](World& world) { return enumerateConditions(world.root); },
         {}},
        {"AddConditionToNone", Start::policy, Retry::completes, addToNone, {}, loseConditions},
        {"AddConditionsOneInvalid", Start::policy, Retry::completes, addOneThatIsInvalid, {}},
        {"AddConditionOfAnotherMatchType", Start::policy, Retry::completes, addToNone, {}, makeOtherType},
        {"AddConditionsBelowAParent", Start::policy, Retry::completes, addBelow, {}},
        {"AddConditionToTheRoot", Start::policy, Retry::completes, addToRoot, {}},
        {"RemoveConditionThatIsMissing", Start::policy, Retry::mayNotFind, removeMissing, {}},
        {"RemoveLastCondition", Start::policy, Retry::mayNotFind, removeLast, notFoundConditions()},
        {"RemoveAllConditionsWithCover", Start::policy, Retry::mayNotFind, removeAll, below},
        {"RemoveConditionAndMissOne", Start::policy, Retry::mayNotFind, removeOneAndMissOne, notFoundConditions()},
        {"RemoveConditionOfSeveralLevels", Start::policy, Retry::mayNotFind, removeAll,
         below + positionsOf({"G"}) + takenBackFromBelow(), makeDeeper},
        {"UpdateConditionToOneThatExists", Start::policy, Retry::completes, updateToAnother, {}},
        {"UpdateSeveralConditions", Start::policy, Retry::completes, updateBoth, {}},
        {"UpdateConditionThatIsNotCovered", Start::policy, Retry::completes, updateNotCovered, {}},
        {"ReplaceConditionsByNone", Start::policy, Retry::succeeds, replaceByNone, below},
        {"ReplaceConditionsByNoneOfSeveralLevels", Start::policy, Retry::succeeds, replaceByNone,
         below + positionsOf({"G"}) + takenBackFromBelow(), makeDeeper},
        {"ReplaceConditionsByMore", Start::policy, Retry::completes, replaceByMore, {}},
        {"ReplaceConditionsSomeInvalid", Start::policy, Retry::succeeds, replaceBySomeInvalid, {}},
    };
    return all;
}

}  // namespace zxtest
