// The conditions of rules, with every mode of checking.
#include "fault/scenario.h"

namespace zxtest {

namespace {

std::string sides(const unsigned char* record) {
    const auto* pair = reinterpret_cast<const _ZxPolAddrPairCond*>(record);
    return std::string(pair->sender) + "," + pair->receiver;
}

// Writes out and releases a list of conflicting conditions.
void settleList(Outcome& outcome, _ZxPolErrorCond** list) {
    if (list == nullptr) return;
    for (_ZxPolErrorCond** entry = list; *entry != nullptr; ++entry) {
        outcome.answer += std::string((*entry)->ruleName) + ":";
        for (unsigned char** pair = (*entry)->conds; *pair != nullptr; ++pair)
            outcome.answer += sides(*pair) + ";";
        outcome.answer += "|";
    }
    int error = outcome.result;
    zxpol_freeErrorConds(list, &error);
}

Outcome enumerate(World& world) {
    Outcome outcome;
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        lib(zxpol_enumCondition, world.a, index, reinterpret_cast<unsigned char*>(&pair), &size, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += sides(bytesOf(pair)) + "|";
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
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
        {"EnumCondition", Start::policy, Retry::succeeds, enumerate, numberedNames()},
        {"AddCondition", Start::policy, Retry::succeeds, add, unreadConditions()},
        {"AddConditionThatExists", Start::policy, Retry::succeeds, addExisting, numberedNames()},
        {"RemoveCondition", Start::policy, Retry::mayNotFind, remove, numberedNames()},
        {"AddConditionsUnchecked", Start::policy, Retry::succeeds, addUnchecked, unreadConditions()},
        {"AddConditionsChecked", Start::policy, Retry::succeeds, addChecked, unreadConditions()},
        {"AddConditionsNotCovered", Start::policy, Retry::succeeds, addUncovered, {}},
        {"RemoveConditionsUnchecked", Start::policy, Retry::mayNotFind, removeUnchecked, numberedNames()},
        {"RemoveConditionsWithCover", Start::policy, Retry::mayNotFind, removeWithCover,
         numberedNames() + positionsOf({"B", "C"})},
        {"UpdateConditionUnchecked", Start::policy, Retry::succeeds, updateOne, {}},
        {"UpdateConditionWithCover", Start::policy, Retry::succeeds, updateOneChecked,
         numberedNames() + positionsOf({"B", "C"})},
        {"ReplaceConditionsUnchecked", Start::policy, Retry::succeeds, replaceAll, {}},
        {"ReplaceConditionsWithCover", Start::policy, Retry::succeeds, replaceAllChecked,
         numberedNames() + positionsOf({"B", "C"})},
    };
    return all;
}

}  // namespace zxtest
