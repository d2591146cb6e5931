// Classifications and actions, the search for what refers to them, and the conversion of texts.
#include <cstring>

#include "fault/scenario.h"

namespace zxtest {

namespace {

// ---- classifications --------------------------------------------------------------------------------------------

Outcome openHive(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = lib(zxpol_openClassificationHive, world.store, &error);
    settle(outcome, hive, error, zxpol_closeClassificationHive);
    return outcome;
}

Outcome create(World& world, const char* name) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    const _ZxPolCommAttrib attr = commonAttr("made");
    _ZxPolComHandle* made = lib(zxpol_createClassification, world.classHive, name, &attr, &error);
    settle(outcome, made, error, zxpol_closeClassification);
    return outcome;
}

Outcome createNew(World& world) {
    return create(world, "New");
}

Outcome createExisting(World& world) {
    return create(world, "Infected");
}

Outcome open(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* found = lib(zxpol_openClassification, world.classHive, "Clean", &error);
    settle(outcome, found, error, zxpol_closeClassification);
    return outcome;
}

Outcome enumerate(World& world) {
    return walkNames(world.classHive, zxpol_enumClassification);
}

Outcome remove(World& world) {
    Outcome outcome;
    lib(zxpol_deleteClassification, world.classHive, "Infected", &outcome.result);
    return outcome;
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolCommAttrib attr{};
    lib(zxpol_getClassificationAttrib, world.classification, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment;
    return outcome;
}

Outcome setAttrib(World& world) {
    Outcome outcome;
    const _ZxPolCommAttrib attr = commonAttr("changed");
    lib(zxpol_setClassificationAttrib, world.classification, &attr, &outcome.result);
    return outcome;
}

// ---- actions ----------------------------------------------------------------------------------------------------

Outcome createAction(World& world, const char* name, uint32_t order) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolActionAttr attr = actionAttr("made", 9, order);
    _ZxPolComHandle* action = lib(zxpol_createAction, world.classification, name, &attr, &error);
    settle(outcome, action, error, zxpol_closeAction);
    if (ZX_SUCCESS(error) != 0) outcome.answer += " at " + std::to_string(attr.order);
    return outcome;
}

Outcome createLastAction(World& world) {
    return createAction(world, "new", 0);
}

Outcome createFirstAction(World& world) {
    return createAction(world, "new", 1);
}

Outcome createExistingAction(World& world) {
    return createAction(world, "log", 1);
}

Outcome openAction(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* action = lib(zxpol_openAction, world.classification, "log", &error);
    settle(outcome, action, error, zxpol_closeAction);
    return outcome;
}

Outcome removeAction(World& world) {
    Outcome outcome;
    lib(zxpol_deleteAction, world.classification, "move", &outcome.result);
    return outcome;
}

Outcome enumerateActions(World& world) {
    return walkNames(world.classification, zxpol_enumAction);
}

Outcome move(World& world, const char* name, uint32_t position) {
    Outcome outcome;
    const uint32_t given = lib(zxpol_setActionOrder, world.classification, name, position, &outcome.result);
    outcome.answer = std::to_string(given);
    if ((given != 0) != (ZX_SUCCESS(outcome.result) != 0)) outcome.violation = "a position must come with a success";
    return outcome;
}

Outcome moveUp(World& world) {
    return move(world, "log", 1);
}

Outcome moveDown(World& world) {
    return move(world, "move", 9);
}

Outcome getActionAttrib(World& world) {
    Outcome outcome;
    _ZxPolActionAttr attr{};
    lib(zxpol_getActionAttrib, world.action, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment + "|" + std::to_string(attr.order) + "|" +
                     std::to_string(attr.actionType) + (attr.setting == nullptr ? "" : "|setting");
    int closed = ZXPOL_S_OK;
    if (attr.setting != nullptr) zxreg_closeKey(attr.setting, &closed);
    return outcome;
}

Outcome setActionAttrib(World& world) {
    Outcome outcome;
    const _ZxPolActionAttr attr = actionAttr("changed", 99);
    lib(zxpol_setActionAttrib, world.action, &attr, &outcome.result);
    return outcome;
}

// ---- references -------------------------------------------------------------------------------------------------

Outcome check(World& world, ZxPolRefEntity entity, const char* name, uint32_t capacity = 64) {
    Outcome outcome;
    char path[64] = "untouched";
    uint32_t size = capacity;
    const int answer = lib(zxpol_checkReferInRule, world.store, entity, name, path, &size, &outcome.result);
    outcome.answer = std::to_string(answer) + " " + path + " " + std::to_string(size);
    if (answer == 0 && (size != capacity || std::strcmp(path, "untouched") != 0))
        outcome.violation = "without a reference nothing is written";
    // A path that does not fit is an answer; the same code without one is a failure.
    if (answer == 1 && outcome.result == ZXPOL_E_BUFFER_TOO_SMALL) outcome.result = ZXPOL_S_OK;
    if (answer != 0 && ZX_FAILURE(outcome.result) != 0) outcome.violation = "a reference must come with a success";
    return outcome;
}

Outcome checkList(World& world) {
    return check(world, ZXPOL_REF_ADDRLIST, "dir");
}

Outcome checkClassification(World& world) {
    return check(world, ZXPOL_REF_CLASSIFICATION, "infected");
}

Outcome checkUnreferred(World& world) {
    Outcome outcome = check(world, ZXPOL_REF_ADDRLIST, "Far");
    if (ZX_FAILURE(outcome.result) != 0) return outcome;
    return check(world, ZXPOL_REF_CLASSIFICATION, "Spam");
}

Outcome checkIntoTooSmallBuffer(World& world) {
    return check(world, ZXPOL_REF_ADDRLIST, "Dir", 3);
}

// What cannot be read while the rules are searched refers to nothing; the root rule must open.
Sites searchedRules() {
    return positionsOf({"A", "B", "C", "D", "E", "t", "u", "v", "scan", "stamp", "deep"}) + numberedNames() +
           Sites{"enumSubkey ",          "openKey rules\\",       "openKey tasks\\",
                 "createKey rules\\",    "createKey tasks\\",     "openKey inactive",
                 "queryValue matchType", "queryValue condition*", "createKey Classification"};
}

// ---- texts ------------------------------------------------------------------------------------------------------

Outcome convert(int (*function)(char*, unsigned*, const char*, unsigned), const std::string& input) {
    Outcome outcome;
    char output[64] = "untouched";
    unsigned size = sizeof output;
    outcome.result = lib(function, output, &size, input.data(), static_cast<unsigned>(input.size()));
    outcome.answer = std::string(output, sizeof output) + std::to_string(size);
    if (ZX_FAILURE(outcome.result) != 0 && (size != sizeof output || std::strcmp(output, "untouched") != 0))
        outcome.violation = "a failing conversion must write nothing";
    return outcome;
}

Outcome toUnicode(World&) {
    return convert(mapToUnicode, "h\xc3\xa4llo");
}

Outcome fromUnicode(World&) {
    return convert(mapFromUnicode, std::string("h\0i\0", 4));
}

}  // namespace

const std::vector<Scenario>& classificationScenarios() {
    const Sites actions = positionsOf({"move", "tell", "log", "new"});
    // Of several values written one after the other the last gives the result.
    const Sites textsOfAnAction = {"setValue comment", "setValue displayName"};
    static const std::vector<Scenario> all = {
        {"OpenClassificationHiveOfAnEmptyStore", Start::emptyStore, Retry::succeeds, openHive, {"setValue version"}},
        {"OpenClassificationHive", Start::policy, Retry::succeeds, openHive, {}},
        {"CreateClassification", Start::policy, Retry::succeeds, createNew, {"createKey actions", "setValue comment"}},
        {"CreateClassificationThatExists",
         Start::policy,
         Retry::succeeds,
         createExisting,
         {"createKey actions", "setValue comment"}},
        {"OpenClassification", Start::policy, Retry::succeeds, open, {}},
        {"EnumClassification", Start::policy, Retry::succeeds, enumerate, {}},
        {"DeleteClassification", Start::policy, Retry::mayNotFind, remove, {}},
        {"GetClassificationAttrib", Start::policy, Retry::succeeds, getAttrib, {}},
        {"SetClassificationAttrib", Start::policy, Retry::succeeds, setAttrib, {"setValue comment"}},
        {"CreateActionAsLast", Start::policy, Retry::succeeds, createLastAction,
         actions + textsOfAnAction + Sites{"createKey setting"}},
        {"CreateActionAsFirst", Start::policy, Retry::succeeds, createFirstAction,
         actions + textsOfAnAction + Sites{"createKey setting"}},
        {"CreateActionThatExists", Start::policy, Retry::succeeds, createExistingAction,
         actions + textsOfAnAction + Sites{"createKey setting"}},
        {"OpenAction", Start::policy, Retry::succeeds, openAction, {}},
        {"DeleteAction", Start::policy, Retry::mayNotFind, removeAction, actions},
        {"EnumAction", Start::policy, Retry::succeeds, enumerateActions, actions},
        {"SetActionOrderUpwards", Start::policy, Retry::succeeds, moveUp, actions},
        {"SetActionOrderDownwards", Start::policy, Retry::succeeds, moveDown, actions},
        {"GetActionAttrib",
         Start::policy,
         Retry::succeeds,
         getActionAttrib,
         {"queryValue displayName", "openKey setting", "queryValue order"}},
        {"SetActionAttrib", Start::policy, Retry::succeeds, setActionAttrib, textsOfAnAction},
        {"CheckReferencesToAList", Start::policy, Retry::succeeds, checkList, searchedRules()},
        {"CheckReferencesToAClassification", Start::policy, Retry::succeeds, checkClassification, searchedRules()},
        {"CheckReferencesOfNone", Start::policy, Retry::succeeds, checkUnreferred, searchedRules()},
        {"CheckReferencesIntoATooSmallBuffer", Start::policy, Retry::succeeds, checkIntoTooSmallBuffer,
         searchedRules()},
        {"CheckReferencesOfAnEmptyStore", Start::emptyStore, Retry::succeeds, checkList, {"setValue version"}},
        {"MapToUnicode", Start::emptyStore, Retry::succeeds, toUnicode, {}},
        {"MapFromUnicode", Start::emptyStore, Retry::succeeds, fromUnicode, {}},
    };
    return all;
}

}  // namespace zxtest
