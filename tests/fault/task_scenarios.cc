// Tasks, inactive marks and outcomes.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome createLast(World& world) {
    return createTask(world.a, "new", 0);
}

Outcome createFirst(World& world) {
    return createTask(world.a, "new", 1);
}

Outcome createExisting(World& world) {
    return createTask(world.a, "u", 1);
}

Outcome open(World& world) {
    return opening(zxpol_closeTask, zxpol_openTask, world.a, "u");
}

Outcome remove(World& world) {
    return resultOf(zxpol_deleteTask, world.a, "u");
}

Outcome enumerate(World& world) {
    return walkNames(world.a, zxpol_enumTask);
}

Outcome move(World& world) {
    return resultOf(zxpol_setTaskOrder, world.a, "v", 1u);
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
    return resultOf(zxpol_inactivateTask, world.a, "\\A\\t", 0);
}

Outcome activate(World& world) {
    return resultOf(zxpol_inactivateTask, world.a, "\\scan", 1);
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
    return resultOf(zxpol_addOutcome, world.task, "torn", "Torn");
}

Outcome deleteOutcome(World& world) {
    return resultOf(zxpol_deleteOutcome, world.task, "clean");
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
        {"CreateTaskThatExists", Start::policy, Retry::succeeds, createExisting, because("position", {"openKey u"})},
        {"OpenTask", Start::policy, Retry::completes, open, {}},
        {"DeleteTask", Start::policy, Retry::mayNotFind, remove,
         positionsOf({"t", "v"}) + deletionOf({"setting", "Classification"})},
        {"EnumTask", Start::policy, Retry::completes, enumerate, positionsOf({"t", "u", "v"})},
        {"SetTaskOrder", Start::policy, Retry::succeeds, move, positionsOf({"t", "u", "v"})},
        {"GetTaskAttrib", Start::policy, Retry::completes, getAttrib, because("attribute-unread", {"queryValue *"})},
        {"SetTaskAttrib", Start::policy, Retry::completes, setAttrib, {}},
        {"InactivateTask", Start::policy, Retry::completes, inactivate, {}},
        {"ActivateTask", Start::policy, Retry::succeeds, activate, {}},
        {"IsTaskActiveOfAnActiveTask", Start::policy, Retry::completes, isActive, {}},
        {"IsTaskActiveOfAnInactiveTask", Start::policy, Retry::completes, isInactive, {}},
        {"GetOutcome", Start::policy, Retry::completes, getOutcome, {}},
        {"AddOutcome", Start::policy, Retry::completes, addOutcome, {}},
        {"DeleteOutcome", Start::policy, Retry::mayNotFind, deleteOutcome, {}},
        {"EnumOutcome", Start::policy, Retry::completes, enumOutcome, {}},
    };
    return all;
}

}  // namespace zxtest
