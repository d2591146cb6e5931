#include "stored/list_store_reader.h"

#include <cstdlib>

#include "output/text.h"
#include "policy/policy_check.h"
#include "result_names.h"
#include "stored/raw_key.h"
#include "tool_error.h"

namespace tool {

namespace {

// Whether there is an address at `index`, which is copied to `address` where that is given.
bool readAddress(const EnumerateAddress& enumerate, uint32_t index, std::string* address, const std::string& where) {
    char buffer[kMaxAddress + 1];
    uint32_t size = sizeof buffer;
    int result = ZXPOL_S_OK;
    enumerate(index, buffer, &size, &result);
    if (hasReason(result, kReasonEnd)) return false;
    require(result, "cannot read the addresses of " + where);
    if (address != nullptr) *address = buffer;
    return true;
}

NormalList normalList(const _ZxPolAddrListAttr& attr, const ListHandle& handle, const std::string& where) {
    const EnumerateAddress enumerate = [&](uint32_t index, char* buffer, uint32_t* size, int* result) {
        zxpol_enumAddress(handle.get(), index, buffer, size, result);
    };
    return {attr.displayName, attr.comment, readAddresses(enumerate, AddressOrder::User, where)};
}

// The library passes over a directory list's name and comment that it cannot read.
DirectoryList directoryList(const Store& store, const std::string& name, const _ZxPolAddrListAttr& attr,
                            Secrets secrets) {
    const KeyHandle key = openRawKey(store.key(), "AddressList\\" + name);
    DirectoryList list;
    list.displayName = rawText(key.get(), "displayName", listText(name));
    list.comment = rawText(key.get(), "comment", listText(name));
    if (secrets == Secrets::Read) list.password = rawText(key.get(), "password", listText(name));
    list.server = attr.server;
    list.port = attr.port;
    list.searchroot = attr.searchroot;
    list.authentication = attr.authentication;
    list.schematype = attr.schematype;
    list.username = attr.username;
    list.filter = attr.filter;
    return list;
}

AddressList readStoredList(const Store& store, const ListHiveHandle& hive, const std::string& name, Secrets secrets) {
    int result = ZXPOL_S_OK;
    const ListHandle handle(zxpol_openAddrList(hive.get(), name.c_str(), &result));
    _ZxPolAddrListAttr attr{};
    zxpol_getAddrListAttrib(handle.get(), &attr, &result);
    require(result, "cannot read " + listText(name));
    if (attr.type == ZXPOL_ADDRLIST_NORMAL) return normalList(attr, handle, listText(name));
    return directoryList(store, name, attr, secrets);
}

}  // namespace

std::vector<std::string> readAddresses(const EnumerateAddress& enumerate, AddressOrder order,
                                       const std::string& where) {
    // The library takes the order from the environment at every call.
    setenv("order", order == AddressOrder::User ? "user" : "ascending", 1);
    std::vector<std::string> addresses;
    for (std::string address; readAddress(enumerate, static_cast<uint32_t>(addresses.size()), &address, where);)
        addresses.push_back(address);
    return addresses;
}

uint32_t countAddresses(const EnumerateAddress& enumerate, const std::string& where) {
    // In this order there is an address at every index below the number of them.
    setenv("order", "user", 1);
    uint32_t below = 0;  // as many there are
    uint32_t step = 1;
    while (step != 0 && readAddress(enumerate, below + step - 1, nullptr, where)) {
        below += step;
        step *= 2;
    }
    for (step /= 2; step > 0; step /= 2)
        if (readAddress(enumerate, below + step - 1, nullptr, where)) below += step;
    return below;
}

std::string listText(const std::string& name) {
    return "address list " + inQuotes(name, kMaxName);
}

std::vector<std::string> readListNames(const Store& store) {
    const KeyHandle hive = openRawKey(store.key(), "AddressList");
    return hive ? rawSubkeys(hive.get()) : std::vector<std::string>();
}

std::map<std::string, AddressList> readStoredLists(const Store& store, Secrets secrets) {
    std::map<std::string, AddressList> lists;
    const std::vector<std::string> names = readListNames(store);
    if (names.empty()) return lists;
    int result = ZXPOL_S_OK;
    const ListHiveHandle hive(zxpol_openAddrListHive(store.key(), &result));
    require(result, "cannot open the address lists in " + oneLine(store.location()));
    for (const std::string& name : names)
        lists.emplace(name, readStoredList(store, hive, name, secrets));
    return lists;
}

}  // namespace tool
