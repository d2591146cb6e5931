// Classifications and actions, the search for what refers to them, and the conversion of texts.
#include <cstring>

#include "fault/acts.h"

namespace zxtest {

namespace {

// ---- classifications --------------------------------------------------------------------------------------------

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
    return opening(zxpol_closeClassification, zxpol_openClassification, world.classHive, "Clean");
}

Outcome enumerate(World& world) {
    return walkNames(world.classHive, zxpol_enumClassification);
}

Outcome remove(World& world) {
    return resultOf(zxpol_deleteClassification, world.classHive, "Infected");
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

Outcome createLastAction(World& world) {
    return createAction(world.classification, "new", 0);
}

Outcome createFirstAction(World& world) {
    return createAction(world.classification, "new", 1);
}

Outcome createExistingAction(World& world) {
    return createAction(world.classification, "log", 1);
}

Outcome openAction(World& world) {
    return opening(zxpol_closeAction, zxpol_openAction, world.classification, "log");
}

Outcome removeAction(World& world) {
    return resultOf(zxpol_deleteAction, world.classification, "move");
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

// ---- texts ------------------------------------------------------------------------------------------------------

Outcome toUnicode(World&) {
    return convert(mapToUnicode, "h\xc3\xa4llo", 64);
}

Outcome fromUnicode(World&) {
    return convert(mapFromUnicode, std::string("h\0i\0", 4), 64);
}

}  // namespace

const std::vector<Scenario>& classificationScenarios() {
    const Sites actions = positionsOf({"move", "tell", "log"});
    // Of several values written one after the other the last gives the result.
    const Sites textsOfAnAction = because("field-by-field", {"setValue comment", "setValue displayName"});
    const Sites newClassification =
        because("key-made-later", {"createKey actions"}) + because("field-by-field", {"setValue comment"});
    static const std::vector<Scenario> all = {
        {"OpenClassificationHiveOfAnEmptyStore", Start::emptyStore, Retry::completes, openClassificationHive,
         because("version", {"setValue version"})},
        {"OpenClassificationHive", Start::policy, Retry::completes, openClassificationHive, {}},
        {"CreateClassification", Start::policy, Retry::completes, createNew, newClassification},
        {"CreateClassificationThatExists", Start::policy, Retry::completes, createExisting,
         because("field-by-field", {"setValue comment"})},
        {"OpenClassification", Start::policy, Retry::completes, open, {}},
        {"EnumClassification", Start::policy, Retry::completes, enumerate, {}},
        {"DeleteClassification", Start::policy, Retry::mayNotFind, remove,
         deletionOf({"actions", "move", "tell", "log", "setting"})},
        {"GetClassificationAttrib", Start::policy, Retry::completes, getAttrib, {}},
        {"SetClassificationAttrib", Start::policy, Retry::completes, setAttrib,
         because("field-by-field", {"setValue comment"})},
        {"CreateActionAsLast", Start::policy, Retry::succeeds, createLastAction,
         actions + textsOfAnAction + because("key-made-later", {"createKey setting"})},
        {"CreateActionAsFirst", Start::policy, Retry::succeeds, createFirstAction,
         actions + textsOfAnAction + because("key-made-later", {"createKey setting"})},
        {"CreateActionThatExists", Start::policy, Retry::succeeds, createExistingAction,
         because("position", {"openKey log"}) + textsOfAnAction},
        {"OpenAction", Start::policy, Retry::completes, openAction, {}},
        {"DeleteAction", Start::policy, Retry::mayNotFind, removeAction,
         positionsOf({"tell", "log"}) + deletionOf({"setting"})},
        {"EnumAction", Start::policy, Retry::completes, enumerateActions, actions},
        {"SetActionOrderUpwards", Start::policy, Retry::succeeds, moveUp, actions},
        {"SetActionOrderDownwards", Start::policy, Retry::succeeds, moveDown, actions},
        {"GetActionAttrib", Start::policy, Retry::completes, getActionAttrib,
         because("attribute-unread", {"queryValue displayName", "openKey setting", "queryValue order"})},
        {"SetActionAttrib", Start::policy, Retry::completes, setActionAttrib, textsOfAnAction},
        {"CheckReferencesToAList", Start::policy, Retry::completes, checkList,
         searchedConditions() + positionsOf({"D"})},
        {"CheckReferencesToAClassification", Start::policy, Retry::completes, checkClassification,
         searchedTasks() + positionsOf({"A", "t"})},
        {"CheckReferencesOfNone", Start::policy, Retry::completes, checkUnreferred, {}},
        {"CheckReferencesIntoATooSmallBuffer", Start::policy, Retry::completes, checkIntoTooSmallBuffer,
         searchedConditions() + positionsOf({"D"})},
        {"CheckReferencesOfAnEmptyStore", Start::emptyStore, Retry::completes, checkList,
         because("version", {"setValue version"})},
        {"MapToUnicode", Start::emptyStore, Retry::completes, toUnicode, {}},
        {"MapFromUnicode", Start::emptyStore, Retry::completes, fromUnicode, {}},
    };
    return all;
}

}  // namespace zxtest
