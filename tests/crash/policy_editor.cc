#include "crash/policy_editor.h"

#include <iterator>

#include "support/records.h"

namespace crash {

using model::RandomSource;
using zxtest::Handle;

namespace {

// Few names, so that edits meet each other.
const std::vector<std::string> ruleNames{"North", "south", "East", "west"};
const std::vector<std::string> taskNames{"scan", "stamp", "hold"};
const std::vector<std::string> outcomeNames{"clean", "found"};
const std::vector<std::string> sides{"*",          "*@example.com", "a1@example.com",
                                     "(staff)",    "*@*.net",       "a*@example.com",
                                     "no address", "(guests)",      "b?@test.net"};

_ZxPolAddrPairCond anyPair(RandomSource& random) {
    const std::string sender = random.pick(sides);
    return zxtest::pairOf(sender, random.pick(sides));
}

}  // namespace

std::string PolicyEditor::anyText(RandomSource& random) {
    const size_t length = random.below(random.inPercent(10) ? 200 : 20);
    return std::string(length, 't') + std::to_string(random.below(100));
}

PolicyEditor::PolicyEditor(std::string location, std::string folder)
    : _location(std::move(location)), _folder(std::move(folder)) {
    reopen();
}

// A store in memory would be lost with its last key.
void PolicyEditor::reopen() {
    for (Handle* handle : {&_classes, &_lists, &_rules})
        handle->reset();
    _error = ZXPOL_S_OK;
    if (_root == nullptr || _location != "memory:") {
        _root.reset();
        _root.reset(zxreg_openStore(_location.c_str(), &_error));
    }
    if (_error < 0) return;
    _rules.reset(zxpol_openRuleHive(_root.get(), 0, &_error));
    _lists.reset(zxpol_openAddrListHive(_root.get(), &_error));
    _classes.reset(zxpol_openClassificationHive(_root.get(), &_error));
}

int PolicyEditor::edit(uint64_t seed, uint64_t index) {
    RandomSource random(seed * 1000003 + index);
    if (!random.inPercent(4)) return editOpen(seed, index);
    reopen();
    return _error;
}

int PolicyEditor::editOpen(uint64_t seed, uint64_t index) {
    RandomSource random(seed * 1000003 + index + 0x100000000u);
    return random.inPercent(20) ? editGroup(random) : editOnce(random);
}

int PolicyEditor::editOnce(RandomSource& random) {
    using Edit = int (PolicyEditor::*)(RandomSource&);
    static constexpr Edit edits[] = {
        &PolicyEditor::editRules,      &PolicyEditor::editRules,          &PolicyEditor::editRules,
        &PolicyEditor::editConditions, &PolicyEditor::editConditions,     &PolicyEditor::editTasks,
        &PolicyEditor::editTasks,      &PolicyEditor::editOutcomes,       &PolicyEditor::editMarks,
        &PolicyEditor::editLists,      &PolicyEditor::editAddresses,      &PolicyEditor::editAddresses,
        &PolicyEditor::importList,     &PolicyEditor::editClassifications};
    return (this->*edits[random.below(std::size(edits))])(random);
}

// Several edits that are kept together or not at all. Failures of single ones do not matter.
int PolicyEditor::editGroup(RandomSource& random) {
    int error = ZXPOL_S_OK;
    zxreg_beginUpdate(_root.get(), &error);
    if (error < 0) return error;
    for (size_t left = random.between(2, 6); left > 0; --left)
        editOnce(random);
    if (random.inPercent(15)) {
        zxreg_cancelUpdate(_root.get(), &error);
    } else {
        zxreg_endUpdate(_root.get(), &error);
    }
    return error;
}

// One of the rules of the first three levels.
std::string PolicyEditor::rulePath(RandomSource& random) {
    std::string path;
    for (size_t levels = random.below(3); levels > 0; --levels)
        path += "\\" + random.pick(ruleNames);
    return path.empty() ? "\\" : path;
}

Handle PolicyEditor::rule(RandomSource& random, int& error) const {
    return Handle(zxpol_openRuleByFullName(_rules.get(), rulePath(random).c_str(), &error));
}

int PolicyEditor::editRules(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const Handle parent = rule(random, error);
    const std::string name = random.pick(ruleNames);
    const size_t kind = random.below(10);
    if (kind < 5) {
        _ZxPolRuleAttr attr = zxtest::ruleAttr(anyText(random));
        attr.order = static_cast<uint32_t>(random.below(5));
        zxtest::CondList conditions{anyPair(random), anyPair(random)};
        const Handle made(zxpol_createRule(parent.get(), name.c_str(), &attr, conditions.get(), &error));
    } else if (kind < 7) {
        zxpol_setRuleOrder(parent.get(), name.c_str(), static_cast<uint32_t>(random.between(1, 5)), &error);
    } else if (kind < 9) {
        zxpol_deleteRule(parent.get(), name.c_str(), &error);
    } else {
        const _ZxPolRuleAttr attr = zxtest::ruleAttr(anyText(random));
        zxpol_setRuleAttrib(parent.get(), &attr, &error);
    }
    return error;
}

// The root keeps its conditions: who opens a policy whose root has none gives it one.
int PolicyEditor::editConditions(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const std::string path = rulePath(random);
    const Handle edited(zxpol_openRuleByFullName(_rules.get(), path.c_str(), &error));
    const _ZxPolAddrPairCond pair = anyPair(random);
    zxtest::CondList pairs{pair, anyPair(random), anyPair(random)};
    const auto mode = random.inPercent(50) ? ZXPOL_COND_CHECK_NONE : ZXPOL_COND_CHECK_HIERARCHY;
    switch (random.below(path == "\\" ? 2 : 5)) {
        case 0:
            zxpol_addCondition(edited.get(), zxtest::bytesOf(pair), &error);
            break;
        case 1:
            zxpol_addConditionEx(edited.get(), pairs.get(), mode, nullptr, &error);
            break;
        case 2:
            zxpol_removeCondition(edited.get(), zxtest::bytesOf(pair), &error);
            break;
        case 3:
            zxpol_removeConditionEx(edited.get(), pairs.get(), mode, nullptr, &error);
            break;
        default:
            zxpol_updateConditionEx(edited.get(), nullptr, pairs.get(), mode, nullptr, &error);
    }
    return error;
}

int PolicyEditor::editTasks(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const Handle owner = rule(random, error);
    const std::string name = random.pick(taskNames);
    const auto number = static_cast<uint32_t>(random.between(1, 4));
    const size_t kind = random.below(10);
    if (kind < 5) {
        _ZxPolTaskAttr attr = zxtest::taskAttr(anyText(random), number, number % 2 == 0 ? 1 : 0, number - 1);
        const Handle made(zxpol_createTask(owner.get(), name.c_str(), &attr, &error));
    } else if (kind < 7) {
        zxpol_setTaskOrder(owner.get(), name.c_str(), number, &error);
    } else if (kind < 9) {
        zxpol_deleteTask(owner.get(), name.c_str(), &error);
    } else if (number % 2 == 0) {
        zxpol_setExclusiveFilterType(_rules.get(), number, ZXPOL_FILTER_DESC_EXCLUSIVE, &error);
    } else {
        zxpol_removeExclusiveFilterType(_rules.get(), number + 1, &error);
    }
    return error;
}

int PolicyEditor::editOutcomes(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const Handle owner = rule(random, error);
    const Handle task(zxpol_openTask(owner.get(), random.pick(taskNames).c_str(), &error));
    const std::string name = random.pick(outcomeNames);
    if (random.inPercent(70)) {
        zxpol_addOutcome(task.get(), name.c_str(), anyText(random).c_str(), &error);
    } else {
        zxpol_deleteOutcome(task.get(), name.c_str(), &error);
    }
    return error;
}

int PolicyEditor::editMarks(RandomSource& random) {
    int error = ZXPOL_S_OK;
    const Handle marked = rule(random, error);
    std::string task = "\\" + random.pick(ruleNames);
    task += "\\" + random.pick(taskNames);
    zxpol_inactivateTask(marked.get(), task.c_str(), random.inPercent(30) ? 1 : 0, &error);
    return error;
}

}  // namespace crash
