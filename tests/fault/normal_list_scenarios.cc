// Normal address lists: changing, importing, reading and matching.
#include "fault/acts.h"
#include "fault/address_file_on_disk.h"

namespace zxtest {

namespace {

// Opens a list, which nobody has opened before, for one call.
template <class Use>
Outcome onList(World& world, const char* name, Use use) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* list = lib(zxpol_openAddrList, world.listHive, name, &error);
    if (list != nullptr) outcome = use(list);
    int closed = ZXPOL_S_OK;
    lib(zxpol_closeAddrList, list, &closed);
    if (ZX_FAILURE(error) != 0) outcome.result = error;
    return outcome;
}

Outcome create(World& world) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    const _ZxPolAddrListAttr attr = normalAttr("made");
    _ZxPolComHandle* list = lib(zxpol_createAddrList, world.listHive, "New", &attr, &error);
    settle(outcome, list, error, zxpol_closeAddrList);
    return outcome;
}

Outcome open(World& world) {
    return opening(zxpol_closeAddrList, zxpol_openAddrList, world.listHive, "Shut");
}

Outcome openAgain(World& world) {
    return opening(zxpol_closeAddrList, zxpol_openAddrList, world.listHive, "Open");
}

Outcome enumerate(World& world) {
    return onList(world, "Shut", [](_ZxPolComHandle* list) { return walkNames(list, zxpol_enumAddress); });
}

Outcome insertFirst(World& world) {
    return onList(world, "Bare", [](_ZxPolComHandle* list) {
        return changeAddresses(list, zxpol_insertAddress, {"first@x.y", "*@x.y"});
    });
}

Outcome insertIntoFullTail(World& world) {
    return changeAddresses(world.list, zxpol_insertAddress, {addressOf("d1", 100)});
}

Outcome insertSeveralValues(World& world) {
    Addresses many;
    for (const char* name : {"d1", "d2", "d3", "d4", "d5", "d6", "d7", "d8", "d9"})
        many.push_back(addressOf(name, 500));
    return changeAddresses(world.list, zxpol_insertAddress, many);
}

Outcome removeAndMove(World& world) {
    return changeAddresses(world.list, zxpol_removeAddress, {addressOf("a2", 500), addressOf("a3", 500)});
}

Outcome removeUnopened(World& world) {
    return onList(world, "Shut", [](_ZxPolComHandle* list) {
        return changeAddresses(list, zxpol_removeAddress,
                               {addressOf("b2", 400), addressOf("*", 500), addressOf("b1", 400)});
    });
}

Outcome removeAll(World& world) {
    Addresses all;
    for (const char* name : {"a1", "a2", "a3", "a4", "b1", "b2", "b3", "b4", "b5", "*", "c1", "c2", "c3"})
        all.push_back(addressOf(name, name[0] == 'b' ? 400 : 500));
    return changeAddresses(world.list, zxpol_removeAddress, all);
}

// Addresses that take two values.
Addresses longAddresses() {
    Addresses addresses;
    for (const char* name : {"f1", "f2", "f3", "f4", "f5"})
        addresses.push_back(addressOf(name, 450));
    return addresses;
}

Outcome import(_ZxPolComHandle* list, uint32_t format, uint32_t replace) {
    static const AddressFileOnDisk plain("", longAddresses()), directory("mail: ", longAddresses());
    return resultOf(zxpol_importAddress, list, format, replace, (format == 0 ? plain : directory).path());
}

Outcome importPlain(World& world) {
    return import(world.list, 0, 0);
}

Outcome importDirectory(World& world) {
    return onList(world, "Bare", [](_ZxPolComHandle* list) { return import(list, 1, 0); });
}

Outcome importReplacing(World& world) {
    return import(world.list, 0, 1);
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolAddrListAttr attr{};
    lib(zxpol_getAddrListAttrib, world.list, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment + "|" + std::to_string(attr.type);
    return outcome;
}

Outcome setAttrib(World& world) {
    Outcome outcome;
    const _ZxPolAddrListAttr attr = normalAttr("changed");
    lib(zxpol_setAddrListAttrib, world.list, &attr, &outcome.result);
    return outcome;
}

Outcome remove(World& world) {
    return resultOf(zxpol_deleteAddrList, world.listHive, "Shut");
}

Outcome match(World& world) {
    Outcome outcome;
    const std::string sender = addressOf("c2", 500);
    const char* receivers[] = {"r@s.t", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_matchRuleByMailInfo, world.ruleHive, world.listHive, sender.c_str(), receivers, &pairs, &count,
        &outcome.result);
    for (uint32_t at = 0; at < count; ++at)
        outcome.answer += std::string(pairs[at].rulePath) + "|";
    if (ZX_FAILURE(outcome.result) != 0 && count != 0) outcome.violation = "pairs must come with a success only";
    int error = ZXPOL_S_OK;
    lib(zxpol_freeMatchPair, pairs, count, &error);
    const bool isKnown = outcome.answer.empty() || outcome.answer == "\\R|" || outcome.answer == "\\|";
    if (!isKnown) outcome.violation = "matched " + outcome.answer;
    return outcome;
}

}  // namespace

const std::vector<Scenario>& normalListScenarios() {
    // Moving addresses forward after a removal may fail without harm: the values stay as long as they are, or as many.
    static const Sites gaps = because("values-stay", {"queryValue address*"});
    static const Sites written = because("values-stay", {"setValue address*"});
    static const Sites shortened =
        because("values-stay", {"enumValue ", "deleteValue address*", "beginUpdate ", "endUpdate "});
    // A rule that cannot be checked is passed over.
    static const Sites unchecked = because("rule-skipped", {"enumValue ", "queryValue *", "openKey *", "createKey *",
                                                            "enumSubkey ", "stamp ", "identity "});
    static const std::vector<Scenario> all = {
        {"CreateNormalList", Start::lists, Retry::completes, create, {}},
        {"OpenNormalList", Start::lists, Retry::completes, open, {}},
        {"OpenNormalListAgain", Start::lists, Retry::completes, openAgain, {}},
        {"EnumAddress", Start::lists, Retry::completes, enumerate, {}},
        {"InsertFirstAddress", Start::lists, Retry::completes, insertFirst, {}},
        {"InsertIntoFullTail", Start::lists, Retry::completes, insertIntoFullTail, {}},
        {"InsertSeveralValues", Start::lists, Retry::completes, insertSeveralValues, {}},
        {"RemoveAndMoveForward", Start::lists, Retry::mayNotFind, removeAndMove, gaps + written},
        {"RemoveFromUnopenedList", Start::lists, Retry::mayNotFind, removeUnopened,
         gaps + written + because("values-stay", {"enumValue "})},
        {"RemoveAllAddresses", Start::lists, Retry::mayNotFind, removeAll, gaps + shortened},
        {"ImportPlain", Start::lists, Retry::completes, importPlain, {}},
        {"ImportDirectoryExport", Start::lists, Retry::completes, importDirectory, {}},
        {"ImportReplacing", Start::lists, Retry::completes, importReplacing, {}},
        {"GetNormalListAttrib", Start::lists, Retry::completes, getAttrib, {}},
        {"SetNormalListAttrib", Start::lists, Retry::completes, setAttrib, {}},
        {"DeleteNormalList", Start::lists, Retry::mayNotFind, remove, {}},
        {"MatchByNormalList", Start::lists, Retry::completes, match, unchecked},
    };
    return all;
}

}  // namespace zxtest
