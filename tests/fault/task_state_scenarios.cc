// Tasks, marks and outcomes in states that are not the usual ones.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome createInTheMiddle(World& world) {
    return createTask(world.a, "new", 2);
}

Outcome createOnly(World& world) {
    return onRule(world, "\\E", [](_ZxPolComHandle* rule) { return createTask(rule, "new", 7); });
}

Outcome openMissing(World& world) {
    return opening(zxpol_closeTask, zxpol_openTask, world.a, "none");
}

Outcome remove(_ZxPolComHandle* rule, const char* name) {
    return resultOf(zxpol_deleteTask, rule, name);
}

Outcome removeMissing(World& world) {
    return remove(world.a, "none");
}

Outcome removeFromRoot(World& world) {
    return remove(world.root, "scan");
}

Outcome enumerateNone(World& world) {
    return onRule(world, "\\E", [](_ZxPolComHandle* rule) { return walkNames(rule, zxpol_enumTask); });
}

Outcome move(World& world, const char* name, uint32_t position) {
    return resultOf(zxpol_setTaskOrder, world.a, name, position);
}

Outcome mark(_ZxPolComHandle* rule, const char* name, int activate) {
    return resultOf(zxpol_inactivateTask, rule, name, activate);
}

Outcome markFirst(World& world) {
    return onRule(world, "\\A\\B", [](_ZxPolComHandle* rule) { return mark(rule, "\\A\\B\\deep", 0); });
}

Outcome isActive(_ZxPolComHandle* rule, const char* name) {
    Outcome outcome;
    const int active = lib(zxpol_isTaskActive, rule, name, &outcome.result);
    outcome.answer = std::to_string(active);
    if (active == 0 && ZX_FAILURE(outcome.result) != 0) outcome.violation = "switched off by a failure";
    return outcome;
}

Outcome isActiveWithoutMarks(World& world) {
    return onRule(world, "\\A\\B", [](_ZxPolComHandle* rule) { return isActive(rule, "\\A\\B\\deep"); });
}

Outcome getOutcome(World& world, const char* name, uint32_t capacity) {
    Outcome outcome;
    char value[64] = "";
    uint32_t size = capacity;
    lib(zxpol_getOutcome, world.task, name, value, &size, &outcome.result);
    outcome.answer = value;
    return outcome;
}

Outcome addExistingOutcome(World& world) {
    return resultOf(zxpol_addOutcome, world.task, "clean", "Quite clean");
}

Outcome deleteMissingOutcome(World& world) {
    return resultOf(zxpol_deleteOutcome, world.task, "none");
}

Outcome addOutcomeToAnother(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* task = lib(zxpol_openTask, world.a, "u", &error);
    if (ZX_SUCCESS(error) != 0) lib(zxpol_addOutcome, task, "torn", "Torn", &outcome.result);
    int closed = ZXPOL_S_OK;
    lib(zxpol_closeTask, task, &closed);
    if (ZX_FAILURE(error) != 0) outcome.result = error;
    return outcome;
}

Outcome enumOutcomesOfAnother(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* task = zxpol_openTask(world.a, "u", &error);
    char name[64];
    char value[64];
    uint32_t nameSize = sizeof name;
    uint32_t valueSize = sizeof value;
    lib(zxpol_enumOutcome, task, 0u, name, &nameSize, value, &valueSize, &outcome.result);
    outcome.result = walkResult(outcome.result);
    zxpol_closeTask(task, &error);
    return outcome;
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolTaskAttr attr{};
    lib(zxpol_getTaskAttrib, world.task, &attr, &outcome.result);
    if (attr.setting == nullptr) return outcome;
    outcome.violation = "a key that is not there";
    int closed = ZXPOL_S_OK;
    zxreg_closeKey(attr.setting, &closed);
    return outcome;
}

void loseOutcomesKey(World& world) {
    deleteStoredKey(world, "Rule\\Mail\\rules\\A\\tasks\\u", "Classification");
}

void loseSettingKey(World& world) {
    deleteStoredKey(world, "Rule\\Mail\\rules\\A\\tasks\\t", "setting");
}

void loseMarksKey(World& world) {
    deleteStoredKey(world, "Rule\\Mail\\rules\\A", "inactive");
}

}  // namespace

const Scenarios& taskStateScenarios() {
    const Sites tasks = positionsOf({"t", "u", "v"});
    static const Scenarios all = {
        {"CreateTaskInTheMiddle", Start::policy, Retry::succeeds, createInTheMiddle, tasks + keysOfANewTask()},
        {"CreateOnlyTask", Start::policy, Retry::succeeds, createOnly, keysOfANewTask()},
        {"OpenTaskThatIsMissing", Start::policy, Retry::completes, openMissing, {}},
        {"DeleteTaskThatIsMissing", Start::policy, Retry::mayNotFind, removeMissing, {}},
        {"DeleteTaskWithMarksBelow", Start::policy, Retry::mayNotFind, removeFromRoot,
         positionsOf({"stamp", "A"}) + deletionOf({"setting", "Classification"})},
        {"EnumTaskOfNone", Start::policy, Retry::completes, enumerateNone, {}},
        {"SetTaskOrderDownwards", Start::policy, Retry::succeeds, [](World& world) { return move(world, "t", 9); },
         tasks},
        {"SetTaskOrderOfAMissingTask",
         Start::policy,
         Retry::completes,
         [](World& world) { return move(world, "none", 1); },
         {}},
        {"InactivateTaskAgain",
         Start::policy,
         Retry::completes,
         [](World& world) { return mark(world.a, "\\A\\U", 0); },
         {}},
        {"InactivateTaskFirst", Start::policy, Retry::completes, markFirst, {}},
        {"InactivateTaskWithoutAPlace",
         Start::policy,
         Retry::completes,
         [](World& world) { return mark(world.a, "\\A\\t", 0); },
         {},
         loseMarksKey},
        {"ActivateTaskThatIsActive",
         Start::policy,
         Retry::completes,
         [](World& world) { return mark(world.a, "\\A\\t", 1); },
         {}},
        {"ActivateTaskOfTheLastMark",
         Start::policy,
         Retry::completes,
         [](World& world) { return mark(world.a, "\\A\\u", 1); },
         {}},
        {"IsTaskActiveWithoutMarks", Start::policy, Retry::completes, isActiveWithoutMarks, {}},
        {"IsTaskActiveWithoutAPlace",
         Start::policy,
         Retry::completes,
         [](World& world) { return isActive(world.a, "\\A\\t"); },
         {},
         loseMarksKey},
        {"GetOutcomeThatIsMissing",
         Start::policy,
         Retry::completes,
         [](World& world) { return getOutcome(world, "none", 64); },
         {}},
        {"GetOutcomeIntoATooSmallBuffer",
         Start::policy,
         Retry::completes,
         [](World& world) { return getOutcome(world, "infected", 2); },
         {}},
        {"AddOutcomeThatExists", Start::policy, Retry::completes, addExistingOutcome, {}},
        {"DeleteOutcomeThatIsMissing", Start::policy, Retry::mayNotFind, deleteMissingOutcome, {}},
        {"AddOutcomeToATaskWithoutAny", Start::policy, Retry::completes, addOutcomeToAnother, {}, loseOutcomesKey},
        {"EnumOutcomeOfNone", Start::policy, Retry::completes, enumOutcomesOfAnother, {}},
        {"GetTaskAttribWithoutSetting", Start::policy, Retry::completes, getAttrib, {}, loseSettingKey},
    };
    return all;
}

}  // namespace zxtest
