// The address-list hive and directory lists.
#include "fault/acts.h"

namespace zxtest {

namespace {

Outcome create(World& world, const char* name) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolAddrListAttr attr = directoryAttr("made");
    attr.port = 636;
    _ZxPolComHandle* list = lib(zxpol_createAddrList, world.listHive, name, &attr, &error);
    settle(outcome, list, error, zxpol_closeAddrList);
    return outcome;
}

Outcome createNew(World& world) {
    return create(world, "New");
}

Outcome createExisting(World& world) {
    return create(world, "Far");
}

Outcome open(World& world) {
    return opening(zxpol_closeAddrList, zxpol_openAddrList, world.listHive, "Far");
}

Outcome enumerate(World& world) {
    return walkNames(world.listHive, zxpol_enumAddrList);
}

Outcome remove(World& world) {
    return resultOf(zxpol_deleteAddrList, world.listHive, "Far");
}

Outcome refresh(World& world) {
    return resultOf(zxpol_refreshLdapCache, world.listHive);
}

Outcome getAttrib(World& world) {
    Outcome outcome;
    _ZxPolAddrListAttr attr{};
    lib(zxpol_getAddrListAttrib, world.list, &attr, &outcome.result);
    outcome.answer = std::string(attr.displayName) + "|" + attr.comment + "|" + std::to_string(attr.type) + "|" +
                     attr.server + "|" + std::to_string(attr.port) + "|" + attr.searchroot + "|" +
                     std::to_string(attr.authentication) + "|" + std::to_string(attr.schematype) + "|" + attr.username +
                     "|" + attr.password + "|" + attr.filter;
    if (outcome.answer.find("hunter2") != std::string::npos) outcome.violation = "the password was given away";
    return outcome;
}

Outcome setAttrib(World& world) {
    Outcome outcome;
    _ZxPolAddrListAttr attr = directoryAttr("changed");
    attr.port = 1;
    lib(zxpol_setAddrListAttrib, world.list, &attr, &outcome.result);
    return outcome;
}

Outcome addressFunctions(World& world) {
    Outcome outcome;
    const char* addresses[] = {"a@b.example", nullptr};
    char buffer[64];
    uint32_t size = sizeof buffer;
    int errors[4] = {ZXPOL_S_OK, ZXPOL_S_OK, ZXPOL_S_OK, ZXPOL_S_OK};
    lib(zxpol_insertAddress, world.list, addresses, &errors[0]);
    lib(zxpol_removeAddress, world.list, addresses, &errors[1]);
    lib(zxpol_importAddress, world.list, 0u, 0u, "/nowhere", &errors[2]);
    lib(zxpol_enumAddress, world.list, 0u, buffer, &size, &errors[3]);
    for (const int error : errors)
        outcome.answer += std::to_string(error) + "|";
    return outcome;
}

}  // namespace

const std::vector<Scenario>& addressListScenarios() {
    // The version gate lets a store pass whose version cannot be written, and the results of reading and writing the
    // common attributes are not looked at.
    static const std::vector<Scenario> all = {
        {"OpenAddrListHiveOfAnEmptyStore", Start::emptyStore, Retry::completes, openAddrListHive,
         because("version", {"setValue version"})},
        {"OpenAddrListHive", Start::policy, Retry::completes, openAddrListHive, {}},
        {"CreateAddrList", Start::policy, Retry::completes, createNew, commonAttributes()},
        {"CreateAddrListThatExists", Start::policy, Retry::completes, createExisting, commonAttributes()},
        {"OpenAddrList", Start::policy, Retry::completes, open, {}},
        {"EnumAddrList", Start::policy, Retry::completes, enumerate, {}},
        {"DeleteAddrList", Start::policy, Retry::mayNotFind, remove, {}},
        {"RefreshLdapCache", Start::policy, Retry::completes, refresh, {}},
        {"GetAddrListAttrib", Start::policy, Retry::completes, getAttrib,
         because("common-attributes", {"queryValue displayName", "queryValue comment"})},
        {"SetAddrListAttrib", Start::policy, Retry::completes, setAttrib, commonAttributes()},
        {"AddressFunctionsOfADirectoryList", Start::policy, Retry::completes, addressFunctions, {}},
    };
    return all;
}

}  // namespace zxtest
