// The conditions of rules, with every mode of checking.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome enumerate(World& world) {
    return enumerateConditions(world.a);
}

Outcome add(World& world) {
    Outcome outcome;
    const _ZxPolAddrPairCond pair = pairOf("*@c.example", "*");
    lib(zxpol_addCondition, world.a, bytesOf(pair), &outcome.result);
    return outcome;
}

Outcome addExisting(World& world) {
    Outcome outcome;
    const _ZxPolAddrPairCond pair = pairOf("BOB@b.example", "*@x.example");
    lib(zxpol_addCondition, world.a, bytesOf(pair), &outcome.result);
    return outcome;
}

Outcome remove(World& world) {
    Outcome outcome;
    const _ZxPolAddrPairCond pair = pairOf("*@a.example", "*");
    lib(zxpol_removeCondition, world.a, bytesOf(pair), &outcome.result);
    return outcome;
}

Outcome addEx(World& world, ZxPolCondCheck mode) {
    Outcome outcome;
    CondList conditions{pairOf("*@c.example", "*"), pairOf("dan@d.example", "*")};
    _ZxPolErrorCond** list = nullptr;
    lib(zxpol_addConditionEx, world.a, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

Outcome addUnchecked(World& world) {
    return addEx(world, ZXPOL_COND_CHECK_NONE);
}

Outcome addChecked(World& world) {
    return addEx(world, ZXPOL_COND_CHECK_HIERARCHY);
}

Outcome addUncovered(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = zxpol_openRule(world.a, "B", &error);
    CondList conditions{pairOf("eve@elsewhere.example", "*")};
    _ZxPolErrorCond** list = nullptr;
    lib(zxpol_addConditionEx, rule, conditions.get(), ZXPOL_COND_CHECK_HIERARCHY, &list, &outcome.result);
    settleList(outcome, list);
    zxpol_closeRule(rule, &error);
    return outcome;
}

Outcome removeEx(World& world, ZxPolCondCheck mode) {
    Outcome outcome;
    CondList conditions{pairOf("*@a.example", "*")};
    _ZxPolErrorCond** list = nullptr;
    lib(zxpol_removeConditionEx, world.a, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

Outcome removeUnchecked(World& world) {
    return removeEx(world, ZXPOL_COND_CHECK_NONE);
}

Outcome removeWithCover(World& world) {
    return removeEx(world, ZXPOL_COND_CHECK_HIERARCHY);
}

Outcome updateEx(World& world, bool all, ZxPolCondCheck mode) {
    Outcome outcome;
    const uint32_t indices[] = {0};
    CondList conditions{pairOf("new@b.example", "*")};
    _ZxPolErrorCond** list = nullptr;
    const uint32_t* which = all ? nullptr : indices;
    lib(zxpol_updateConditionEx, world.a, which, conditions.get(), mode, &list, &outcome.result);
    settleList(outcome, list);
    return outcome;
}

Outcome updateOne(World& world) {
    return updateEx(world, false, ZXPOL_COND_CHECK_NONE);
}

Outcome updateOneChecked(World& world) {
    return updateEx(world, false, ZXPOL_COND_CHECK_HIERARCHY);
}

Outcome replaceAll(World& world) {
    return updateEx(world, true, ZXPOL_COND_CHECK_NONE);
}

Outcome replaceAllChecked(World& world) {
    return updateEx(world, true, ZXPOL_COND_CHECK_HIERARCHY);
}

}  // namespace

const std::vector<Scenario>& conditionScenarios() {
    static const std::vector<Scenario> all = {
        {"EnumCondition", Start::policy, Retry::completes, enumerate, {}},
        {"AddCondition", Start::policy, Retry::completes, add, {}},
        {"AddConditionThatExists", Start::policy, Retry::completes, addExisting, {}},
        {"RemoveCondition", Start::policy, Retry::mayNotFind, remove, notFoundConditions()},
        {"AddConditionsUnchecked", Start::policy, Retry::completes, addUnchecked, {}},
        {"AddConditionsChecked", Start::policy, Retry::completes, addChecked, {}},
        {"AddConditionsNotCovered", Start::policy, Retry::completes, addUncovered, {}},
        {"RemoveConditionsUnchecked", Start::policy, Retry::mayNotFind, removeUnchecked, notFoundConditions()},
        {"RemoveConditionsWithCover", Start::policy, Retry::mayNotFind, removeWithCover,
         positionsOf({"B", "C"}) + notFoundConditions() + takenBack()},
        {"UpdateConditionUnchecked", Start::policy, Retry::completes, updateOne, {}},
        {"UpdateConditionWithCover", Start::policy, Retry::completes, updateOneChecked,
         positionsOf({"B", "C"}) + notFoundConditions() + takenBack()},
        {"ReplaceConditionsUnchecked", Start::policy, Retry::succeeds, replaceAll, {}},
        {"ReplaceConditionsWithCover", Start::policy, Retry::succeeds, replaceAllChecked,
         positionsOf({"B", "C"}) + notFoundConditions() + takenBack()},
    };
    return all;
}

}  // namespace zxtest
