// Address lists in states that are not the usual ones: missing, empty, sorted, changed by others; matches that ask
// them.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "fault/acts.h"
#include "fault/address_file_on_disk.h"

namespace zxtest {

namespace {

Outcome open(World& world, const char* name) {
    return opening(zxpol_closeAddrList, zxpol_openAddrList, world.listHive, name);
}

Outcome create(World& world, const char* name, const _ZxPolAddrListAttr& attr) {
    return opening(zxpol_closeAddrList, zxpol_createAddrList, world.listHive, name, &attr);
}

Outcome createExistingNormal(World& world) {
    return create(world, "Shut", normalAttr("made"));
}

Outcome createUnknownType(World& world) {
    _ZxPolAddrListAttr attr = normalAttr("made");
    attr.type = 2;
    return create(world, "New", attr);
}

Outcome removeMissing(World& world) {
    return resultOf(zxpol_deleteAddrList, world.listHive, "None");
}

Outcome removeOpen(World& world) {
    return resultOf(zxpol_deleteAddrList, world.listHive, "Bare");
}

// The addresses of the open list in the order that the environment asks for.
Outcome enumerate(World& world, const char* order) {
    setenv("order", order, 1);
    Outcome outcome = walkNames(world.list, zxpol_enumAddress);
    unsetenv("order");
    return outcome;
}

Outcome enumerateUnopened(World& world, const char* name) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* list = lib(zxpol_openAddrList, world.listHive, name, &error);
    if (list != nullptr) outcome = walkNames(list, zxpol_enumAddress);
    int closed = ZXPOL_S_OK;
    lib(zxpol_closeAddrList, list, &closed);
    if (ZX_FAILURE(error) != 0) outcome.result = error;
    return outcome;
}

Outcome insertSomeInvalid(World& world) {
    return changeAddresses(world.list, zxpol_insertAddress, {"no address", addressOf("d1", 30), "also none"});
}

Outcome insertExisting(World& world) {
    return changeAddresses(world.list, zxpol_insertAddress, {addressOf("A1", 500)});
}

Outcome insertPattern(World& world) {
    return changeAddresses(world.list, zxpol_insertAddress, {"*@pattern.example", "*@*.pattern.example"});
}

Outcome removeMissingAddress(World& world) {
    return changeAddresses(world.list, zxpol_removeAddress, {"nobody@x.example"});
}

Outcome removeOneAndMissOne(World& world) {
    return changeAddresses(world.list, zxpol_removeAddress, {addressOf("c3", 500), "nobody@x.example"});
}

Outcome removePattern(World& world) {
    return changeAddresses(world.list, zxpol_removeAddress, {addressOf("*", 500)});
}

Outcome onBare(World& world, void (*function)(_ZxPolComHandle*, const char**, int*), const Addresses& addresses) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* list = zxpol_openAddrList(world.listHive, "Bare", &error);
    Outcome outcome = changeAddresses(list, function, addresses);
    zxpol_closeAddrList(list, &error);
    return outcome;
}

Outcome removeFromNone(World& world) {
    return onBare(world, zxpol_removeAddress, {"nobody@x.example"});
}

Outcome import(_ZxPolComHandle* list, const char* path, uint32_t format, uint32_t replace) {
    return resultOf(zxpol_importAddress, list, format, replace, path);
}

Outcome importSomeInvalid(World& world) {
    static const AddressFileOnDisk file("", {"f1@x.example", "no address", "f2@x.example"});
    return import(world.list, file.path(), 0, 0);
}

Outcome importNothingReplacing(World& world) {
    static const AddressFileOnDisk file("", {});
    return import(world.list, file.path(), 0, 1);
}

Outcome importDirectoryReplacing(World& world) {
    static const AddressFileOnDisk file("rfc822mailbox: ", {"f1@x.example", "f2@x.example"});
    return import(world.list, file.path(), 1, 1);
}

Outcome importFromNowhere(World& world) {
    return import(world.list, "/nowhere/at/all", 0, 1);
}

Outcome refresh(World& world) {
    return resultOf(zxpol_refreshLdapCache, world.listHive);
}

Outcome match(World& world, uint32_t mode, const std::string& sender) {
    Outcome outcome;
    const char* receivers[] = {"r@s.t", "second@s.t", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_matchRuleByMailInfoEx, world.ruleHive, world.listHive, mode, sender.c_str(), receivers, &pairs, &count,
        &outcome.result);
    for (uint32_t at = 0; at < count; ++at) {
        const std::string path = pairs[at].rulePath;
        outcome.answer += path + "|";
        if (path != "\\R" && path != "\\") outcome.violation = "matched " + path;
    }
    if (ZX_FAILURE(outcome.result) != 0 && count != 0) outcome.violation = "pairs must come with a success only";
    int error = ZXPOL_S_OK;
    lib(zxpol_freeMatchPair, pairs, count, &error);
    return outcome;
}

Outcome matchBestByAddress(World& world) {
    return match(world, 1, addressOf("c2", 500));
}

Outcome matchFirstByPattern(World& world) {
    return match(world, 0, addressOf("anybody", 506));
}

Outcome matchNoAddressOfTheList(World& world) {
    return match(world, 1, "nobody@elsewhere.example");
}

// Another object changes the open list, so that its own cache is behind the store.
void changeBehindItsBack(World& world) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* key = zxreg_openKey(world.store, "AddressList\\Open", &error);
    zxreg_setValue(key, "address4", ZXREG_MULTI_STRING, "o1@x.example\0", 14, &error);
    zxreg_closeKey(key, &error);
}

// Fills a whole value with addresses of which the last has no NUL, and nothing is behind it.
void fillWithoutEnd(World& world) {
    std::string image;
    for (const char* name : {"f1", "f2", "f3", "f4"})
        image += addressOf(name, 400) + '\0';
    image += addressOf("f5", 449);
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* key = zxreg_openKey(world.store, "AddressList\\Bare", &error);
    zxreg_setValue(key, "address1", ZXREG_MULTI_STRING, image.data(), static_cast<uint32_t>(image.size()), &error);
    zxreg_closeKey(key, &error);
}

void loseTheListOfTheRule(World& world) {
    int error = ZXPOL_S_OK;
    zxpol_deleteAddrList(world.listHive, "Shut", &error);
}

}  // namespace

const Scenarios& listStateScenarios() {
    static const Sites gaps = because("values-stay", {"enumValue ", "queryValue address*"});
    static const Sites unchecked =
        because("rule-skipped", {"openKey *", "createKey *", "queryValue *", "enumValue ", "stamp ", "identity "});
    static const Scenarios all = {
        {"CreateNormalListThatExists", Start::lists, Retry::completes, createExistingNormal, {}},
        {"CreateAddrListOfAnUnknownType", Start::lists, Retry::completes, createUnknownType, {}},
        {"OpenAddrListThatIsMissing",
         Start::lists,
         Retry::completes,
         [](World& world) { return open(world, "None"); },
         {}},
        {"OpenNormalListOfNone", Start::lists, Retry::completes, [](World& world) { return open(world, "Bare"); }, {}},
        {"OpenListThatHasChanged",
         Start::lists,
         Retry::completes,
         [](World& world) { return open(world, "Open"); },
         {},
         changeBehindItsBack},
        {"OpenListWhoseValueHasNoEnd",
         Start::lists,
         Retry::completes,
         [](World& world) { return open(world, "Bare"); },
         {},
         fillWithoutEnd},
        {"EnumAddressOfAValueWithoutEnd",
         Start::lists,
         Retry::completes,
         [](World& world) { return enumerateUnopened(world, "Bare"); },
         {},
         fillWithoutEnd},
        {"InsertBehindAValueWithoutEnd",
         Start::lists,
         Retry::completes,
         [](World& world) { return onBare(world, zxpol_insertAddress, {"n@x.example"}); },
         {},
         fillWithoutEnd},
        {"RemoveFromAValueWithoutEnd",
         Start::lists,
         Retry::mayNotFind,
         [](World& world) { return onBare(world, zxpol_removeAddress, {addressOf("f5", 449)}); },
         {},
         fillWithoutEnd},
        {"DeleteAddrListThatIsMissing", Start::lists, Retry::mayNotFind, removeMissing, {}},
        {"DeleteEmptyList", Start::lists, Retry::mayNotFind, removeOpen, {}},
        {"RefreshLdapCacheWithoutDirectories", Start::lists, Retry::completes, refresh, {}},
        {"EnumAddressAscending",
         Start::lists,
         Retry::completes,
         [](World& world) { return enumerate(world, "ascending"); },
         {}},
        {"EnumAddressDescending",
         Start::lists,
         Retry::completes,
         [](World& world) { return enumerate(world, "decending"); },
         {}},
        {"EnumAddressAsInserted",
         Start::lists,
         Retry::completes,
         [](World& world) { return enumerate(world, "user"); },
         {}},
        {"EnumAddressOfNone",
         Start::lists,
         Retry::completes,
         [](World& world) { return enumerateUnopened(world, "Bare"); },
         {}},
        {"InsertAddressesSomeInvalid", Start::lists, Retry::completes, insertSomeInvalid, {}},
        {"InsertAddressThatExists", Start::lists, Retry::completes, insertExisting, {}},
        {"InsertPatterns", Start::lists, Retry::completes, insertPattern, {}},
        {"InsertIntoAListThatHasChanged", Start::lists, Retry::completes, insertPattern, {}, changeBehindItsBack},
        {"RemoveAddressThatIsMissing", Start::lists, Retry::mayNotFind, removeMissingAddress, {}},
        {"RemoveAddressAndMissOne", Start::lists, Retry::mayNotFind, removeOneAndMissOne, {}},
        {"RemovePattern", Start::lists, Retry::mayNotFind, removePattern, {}},
        {"RemoveFromAListThatHasChanged", Start::lists, Retry::mayNotFind, removePattern, gaps, changeBehindItsBack},
        {"RemoveAddressOfNone", Start::lists, Retry::mayNotFind, removeFromNone, {}},
        {"ImportSomeInvalid", Start::lists, Retry::completes, importSomeInvalid, {}},
        {"ImportNothingReplacing", Start::lists, Retry::completes, importNothingReplacing, {}},
        {"ImportDirectoryExportReplacing", Start::lists, Retry::completes, importDirectoryReplacing, {}},
        {"ImportFromAFileThatIsMissing", Start::lists, Retry::completes, importFromNowhere, {}},
        {"MatchBestByNormalList", Start::lists, Retry::completes, matchBestByAddress,
         unchecked + because("best-so-far", {"enumSubkey "})},
        {"MatchFirstByAPatternOfAList", Start::lists, Retry::completes, matchFirstByPattern, unchecked},
        {"MatchNoAddressOfAList", Start::lists, Retry::completes, matchNoAddressOfTheList, {}},
        {"MatchByAListThatIsMissing", Start::lists, Retry::completes, matchFirstByPattern, {}, loseTheListOfTheRule},
    };
    return all;
}

}  // namespace zxtest
