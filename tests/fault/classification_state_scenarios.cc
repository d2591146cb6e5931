// Classifications, actions, references and texts in states that are not the usual ones.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome openMissing(World& world) {
    return opening(zxpol_closeClassification, zxpol_openClassification, world.classHive, "None");
}

Outcome remove(World& world, const char* name) {
    return resultOf(zxpol_deleteClassification, world.classHive, name);
}

Outcome removeMissing(World& world) {
    return remove(world, "None");
}

Outcome removeWithoutActions(World& world) {
    return remove(world, "Clean");
}

// Calls use(classification) with one that has no actions.
template <class Use>
Outcome onClean(World& world, Use use) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* classification = zxpol_openClassification(world.classHive, "Clean", &error);
    Outcome outcome = use(classification);
    int closed = ZXPOL_S_OK;
    zxpol_closeClassification(classification, &closed);
    return outcome;
}

Outcome createOnlyAction(World& world) {
    return onClean(world, [](_ZxPolComHandle* classification) { return createAction(classification, "new", 1); });
}

Outcome createActionInTheMiddle(World& world) {
    return createAction(world.classification, "new", 2);
}

Outcome enumNoActions(World& world) {
    return onClean(world, [](_ZxPolComHandle* classification) { return walkNames(classification, zxpol_enumAction); });
}

Outcome openMissingAction(World& world) {
    return opening(zxpol_closeAction, zxpol_openAction, world.classification, "none");
}

Outcome removeAction(World& world, const char* name) {
    return resultOf(zxpol_deleteAction, world.classification, name);
}

Outcome moveMissingAction(World& world) {
    Outcome outcome;
    const uint32_t given = lib(zxpol_setActionOrder, world.classification, "none", 1u, &outcome.result);
    if (given != 0) outcome.violation = "a position must come with a success";
    return outcome;
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolActionAttr attr{};
    lib(zxpol_getActionAttrib, world.action, &attr, &outcome.result);
    if (attr.setting == nullptr) return outcome;
    outcome.violation = "a key that is not there";
    int closed = ZXPOL_S_OK;
    zxreg_closeKey(attr.setting, &closed);
    return outcome;
}

Outcome check(World& world, ZxPolRefEntity entity, const char* name) {
    Outcome outcome;
    char path[64] = "untouched";
    uint32_t size = sizeof path;
    const int answer = lib(zxpol_checkReferInRule, world.store, entity, name, path, &size, &outcome.result);
    outcome.answer = std::to_string(answer) + " " + path;
    if (answer != 0 && ZX_FAILURE(outcome.result) != 0) outcome.violation = "a reference must come with a success";
    return outcome;
}

void makeNewer(World& world) {
    setStoredNumber(world, "", "version", 0x02000000);
}

void loseClassifications(World& world) {
    for (const char* name : {"Infected", "Clean"}) {
        int error = ZXPOL_S_OK;
        zxpol_deleteClassification(world.classHive, name, &error);
    }
}

void loseSetting(World& world) {
    deleteStoredKey(world, "Classification\\Infected\\actions\\tell", "setting");
}

// Makes the root rule refer to a list, and nothing else to any.
void referAtTheRoot(World& world) {
    int error = ZXPOL_S_OK;
    const _ZxPolAddrPairCond pair = pairOf("*", "(Far)");
    zxpol_addCondition(world.root, bytesOf(pair), &error);
}

}  // namespace

const Scenarios& classificationStateScenarios() {
    const Sites newer = because("version", {"queryValue version"});
    const Sites actions = positionsOf({"move", "tell", "log"});
    const Sites texts = because("field-by-field", {"setValue comment", "setValue displayName"});
    const Sites setting = because("key-made-later", {"createKey setting"});
    static const Scenarios all = {
        {"OpenClassificationHiveOfANewerStore", Start::policy, Retry::stamped, openClassificationHive, newer,
         makeNewer},
        {"OpenAddrListHiveOfANewerStore", Start::policy, Retry::stamped, openAddrListHive, newer, makeNewer},
        {"OpenClassificationThatIsMissing", Start::policy, Retry::completes, openMissing, {}},
        {"EnumClassificationOfNone",
         Start::policy,
         Retry::completes,
         [](World& world) { return walkNames(world.classHive, zxpol_enumClassification); },
         {},
         loseClassifications},
        {"DeleteClassificationThatIsMissing", Start::policy, Retry::mayNotFind, removeMissing, {}},
        {"DeleteClassificationWithoutActions", Start::policy, Retry::mayNotFind, removeWithoutActions,
         deletionOf({"actions"})},
        {"CreateOnlyAction", Start::policy, Retry::succeeds, createOnlyAction, texts + setting},
        {"CreateActionInTheMiddle", Start::policy, Retry::succeeds, createActionInTheMiddle, actions + texts + setting},
        {"EnumActionOfNone", Start::policy, Retry::completes, enumNoActions, {}},
        {"OpenActionThatIsMissing", Start::policy, Retry::completes, openMissingAction, {}},
        {"DeleteLastAction", Start::policy, Retry::mayNotFind, [](World& world) { return removeAction(world, "log"); },
         positionsOf({"move"}) + deletionOf({"setting"})},
        {"DeleteActionThatIsMissing",
         Start::policy,
         Retry::mayNotFind,
         [](World& world) { return removeAction(world, "none"); },
         {}},
        {"SetActionOrderOfAMissingAction", Start::policy, Retry::completes, moveMissingAction, {}},
        {"GetActionAttribWithoutSetting", Start::policy, Retry::completes, getAttrib, {}, loseSetting},
        {"CheckReferencesAtTheRoot", Start::policy, Retry::completes,
         [](World& world) { return check(world, ZXPOL_REF_ADDRLIST, "Far"); },
         because("no-reference",
                 {"enumValue ", "enumSubkey ", "openKey rules\\", "queryValue matchType", "queryValue condition*"}),
         referAtTheRoot},
        {"CheckReferencesOfANewerStore", Start::policy, Retry::stamped,
         [](World& world) { return check(world, ZXPOL_REF_ADDRLIST, "Dir"); }, newer, makeNewer},
        {"CheckReferencesOfAnUnknownKind",
         Start::policy,
         Retry::completes,
         [](World& world) { return check(world, static_cast<ZxPolRefEntity>(7), "Dir"); },
         {}},
        {"MapToUnicodeOfALongText",
         Start::emptyStore,
         Retry::completes,
         [](World&) { return convert(mapToUnicode, std::string(1000, 'a'), 4096); },
         {}},
        {"MapToUnicodeIntoATooSmallBuffer",
         Start::emptyStore,
         Retry::completes,
         [](World&) { return convert(mapToUnicode, "hello", 4); },
         {}},
        {"MapToUnicodeOfAMalformedText",
         Start::emptyStore,
         Retry::completes,
         [](World&) { return convert(mapToUnicode, "h\xff", 64); },
         {}},
        {"MapFromUnicodeOfALongText",
         Start::emptyStore,
         Retry::completes,
         [](World&) { return convert(mapFromUnicode, std::string(1000, 'a'), 4096); },
         {}},
    };
    return all;
}

}  // namespace zxtest
