#include "apply_context.h"
#include "raw_key.h"
#include "text.h"
#include "tool_error.h"

namespace tool {

namespace {

_ZxPolAddrListAttr recordOf(const DirectoryList& list) {
    _ZxPolAddrListAttr attr{};
    copyText(attr.displayName, list.displayName);
    copyText(attr.comment, list.comment);
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    copyText(attr.server, list.server);
    attr.port = list.port;
    copyText(attr.searchroot, list.searchroot);
    attr.authentication = list.authentication;
    attr.schematype = list.schematype;
    copyText(attr.username, list.username);
    copyText(attr.password, list.password.value_or(""));
    copyText(attr.filter, list.filter);
    return attr;
}

std::vector<std::string> differences(const DirectoryList& current, const DirectoryList& wanted) {
    std::vector<std::string> details;
    compare(details, "displayName", current.displayName, wanted.displayName);
    compare(details, "comment", current.comment, wanted.comment);
    compare(details, "server", current.server, wanted.server);
    compare(details, "port", current.port, wanted.port);
    compare(details, "searchroot", current.searchroot, wanted.searchroot);
    compare(details, "authentication", current.authentication, wanted.authentication);
    compare(details, "schematype", current.schematype, wanted.schematype);
    compare(details, "username", current.username, wanted.username);
    compare(details, "filter", current.filter, wanted.filter);
    if (wanted.password && wanted.password != current.password) details.emplace_back("password");
    return details;
}

// Writes the attributes of an existing list. The interface writes a password with them, so that one which the file
// does not name is put back as it was.
void changeList(ApplyContext& context, const ListHiveHandle& hive, const std::string& name,
                const DirectoryList& wanted) {
    const KeyHandle key = openRawKey(context.store.key(), "AddressList\\" + name);
    const std::string password = wanted.password ? "" : rawData(key.get(), "password");
    const _ZxPolAddrListAttr attr = recordOf(wanted);
    int result = ZXPOL_S_OK;
    const ListHandle list(zxpol_openAddrList(hive.get(), name.c_str(), &result));
    zxpol_setAddrListAttrib(list.get(), &attr, &result);
    if (ZX_SUCCESS(result) && !wanted.password)
        zxreg_setValue(key.get(), "password", ZXREG_PROTECTED_STRING, password.data(),
                       static_cast<uint32_t>(password.size()), &result);
    require(result, "cannot change address list " + inQuotes(name, 255));
}

void createList(const ListHiveHandle& hive, const std::string& name, const DirectoryList& wanted) {
    const _ZxPolAddrListAttr attr = recordOf(wanted);
    int result = ZXPOL_S_OK;
    const ListHandle list(zxpol_createAddrList(hive.get(), name.c_str(), &attr, &result));
    require(result, "cannot create address list " + inQuotes(name, 255));
}

}  // namespace

void applyLists(ApplyContext& context, const ListHiveHandle& hive, const Policy& current, const Policy& wanted) {
    for (const auto& [name, list] : current.lists) {
        if (wanted.lists.count(name) != 0) continue;
        int result = ZXPOL_S_OK;
        zxpol_deleteAddrList(hive.get(), name.c_str(), &result);
        require(result, "cannot delete address list " + inQuotes(name, 255));
        context.changes.add(Change::Kind::Deleted, "address list", name);
    }
    for (const auto& [name, list] : wanted.lists) {
        const auto found = current.lists.find(name);
        if (found == current.lists.end()) {
            createList(hive, name, list);
            context.changes.add(Change::Kind::Created, "address list", name);
            continue;
        }
        const std::vector<std::string> details = differences(found->second, list);
        if (details.empty()) continue;
        changeList(context, hive, name, list);
        context.changes.add(Change::Kind::Changed, "address list", name, details);
    }
}

}  // namespace tool
