// Tasks, inactive marks and outcomes.
#include "fault/scenario.h"

namespace zxtest {

namespace {

Outcome create(World& world, const char* name, uint32_t order) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = taskAttr("made", 3, 1, order);
    _ZxPolComHandle* task = lib(zxpol_createTask, world.a, name, &attr, &error);
    settle(outcome, task, error, zxpol_closeTask);
    if (ZX_SUCCESS(error) != 0) outcome.answer += " at " + std::to_string(attr.order);
    return outcome;
}

Outcome createLast(World& world) {
    return create(world, "new", 0);
}

Outcome createFirst(World& world) {
    return create(world, "new", 1);
}

Outcome createExisting(World& world) {
    return create(world, "u", 1);
}

Outcome open(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* task = lib(zxpol_openTask, world.a, "u", &error);
    settle(outcome, task, error, zxpol_closeTask);
    return outcome;
}

Outcome remove(World& world) {
    Outcome outcome;
    lib(zxpol_deleteTask, world.a, "u", &outcome.result);
    return outcome;
}

Outcome enumerate(World& world) {
    return walkNames(world.a, zxpol_enumTask);
}

Outcome move(World& world) {
    Outcome outcome;
    lib(zxpol_setTaskOrder, world.a, "v", 1u, &outcome.result);
    return outcome;
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolTaskAttr attr{};
    lib(zxpol_getTaskAttrib, world.task, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment + "|" + std::to_string(attr.order) + "|" +
                     std::to_string(attr.filter) + "|" + std::to_string(attr.enable) + "|" +
                     std::to_string(attr.overridable);
    if ((attr.setting != nullptr) != (ZX_SUCCESS(outcome.result) != 0)) {
        outcome.violation = "the key \"setting\" must come with a success only";
    }
    int closed = ZXPOL_S_OK;
    if (attr.setting != nullptr) zxreg_closeKey(attr.setting, &closed);
    return outcome;
}

Outcome setAttrib(World& world) {
    Outcome outcome;
    const _ZxPolTaskAttr attr = taskAttr("changed", 99, 1);
    lib(zxpol_setTaskAttrib, world.task, &attr, &outcome.result);
    return outcome;
}

Outcome inactivate(World& world) {
    Outcome outcome;
    lib(zxpol_inactivateTask, world.a, "\\A\\t", 0, &outcome.result);
    return outcome;
}

Outcome activate(World& world) {
    Outcome outcome;
    lib(zxpol_inactivateTask, world.a, "\\scan", 1, &outcome.result);
    return outcome;
}

Outcome isActive(World& world) {
    Outcome outcome;
    outcome.answer = std::to_string(lib(zxpol_isTaskActive, world.a, "\\A\\t", &outcome.result));
    return outcome;
}

Outcome isInactive(World& world) {
    Outcome outcome;
    outcome.answer = std::to_string(lib(zxpol_isTaskActive, world.a, "\\A\\U\\", &outcome.result));
    return outcome;
}

Outcome getOutcome(World& world) {
    Outcome outcome;
    char value[64] = "";
    uint32_t size = sizeof value;
    lib(zxpol_getOutcome, world.task, "infected", value, &size, &outcome.result);
    if (ZX_SUCCESS(outcome.result) != 0) outcome.answer = value + std::to_string(size);
    return outcome;
}

Outcome addOutcome(World& world) {
    Outcome outcome;
    lib(zxpol_addOutcome, world.task, "torn", "Torn", &outcome.result);
    return outcome;
}

Outcome deleteOutcome(World& world) {
    Outcome outcome;
    lib(zxpol_deleteOutcome, world.task, "clean", &outcome.result);
    return outcome;
}

Outcome enumOutcome(World& world) {
    Outcome outcome;
    for (uint32_t index = 0;; ++index) {
        char name[64];
        char value[64];
        uint32_t nameSize = sizeof name;
        uint32_t valueSize = sizeof value;
        lib(zxpol_enumOutcome, world.task, index, name, &nameSize, value, &valueSize, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += std::string(name) + "=" + value + "|";
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
}

}  // namespace

const std::vector<Scenario>& taskScenarios() {
    static const std::vector<Scenario> all = {
        {"CreateTaskAsLast", Start::policy, Retry::succeeds, createLast,
         positionsOf({"t", "u", "v"}) + keysOfANewTask()},
        {"CreateTaskAsFirst", Start::policy, Retry::succeeds, createFirst,
         positionsOf({"t", "u", "v"}) + keysOfANewTask()},
        {"CreateTaskThatExists", Start::policy, Retry::succeeds, createExisting, positionsOf({"t", "u", "v"})},
        {"OpenTask", Start::policy, Retry::succeeds, open, {}},
        {"DeleteTask", Start::policy, Retry::mayNotFind, remove, positionsOf({"t", "u", "v"}) + numberedNames()},
        {"EnumTask", Start::policy, Retry::succeeds, enumerate, positionsOf({"t", "u", "v"})},
        {"SetTaskOrder", Start::policy, Retry::succeeds, move, positionsOf({"t", "u", "v"})},
        {"GetTaskAttrib", Start::policy, Retry::succeeds, getAttrib, {"queryValue *"}},
        {"SetTaskAttrib", Start::policy, Retry::succeeds, setAttrib, {}},
        {"InactivateTask", Start::policy, Retry::succeeds, inactivate, numberedNames()},
        {"ActivateTask", Start::policy, Retry::succeeds, activate, numberedNames()},
        {"IsTaskActiveOfAnActiveTask", Start::policy, Retry::succeeds, isActive, {}},
        {"IsTaskActiveOfAnInactiveTask", Start::policy, Retry::succeeds, isInactive, numberedNames()},
        {"GetOutcome", Start::policy, Retry::succeeds, getOutcome, {}},
        {"AddOutcome", Start::policy, Retry::succeeds, addOutcome, {}},
        {"DeleteOutcome", Start::policy, Retry::mayNotFind, deleteOutcome, {}},
        {"EnumOutcome", Start::policy, Retry::succeeds, enumOutcome, {}},
    };
    return all;
}

}  // namespace zxtest
