#include <cstring>

#include "address_apply.h"
#include "apply_context.h"
#include "list_store_reader.h"
#include "raw_key.h"
#include "text.h"
#include "tool_error.h"

namespace tool {

namespace {

// A list's attributes, wiped when they go: there may be a password among them.
struct ListRecord : _ZxPolAddrListAttr {
    ListRecord() : _ZxPolAddrListAttr{} {}
    ListRecord(const ListRecord&) = default;
    ListRecord& operator=(const ListRecord&) = delete;
    ~ListRecord() { explicit_bzero(password, sizeof password); }
};

ListRecord recordOf(const NormalList& list) {
    ListRecord attr;
    copyText(attr.displayName, list.displayName);
    copyText(attr.comment, list.comment);
    attr.type = ZXPOL_ADDRLIST_NORMAL;
    return attr;
}

ListRecord recordOf(const DirectoryList& list) {
    ListRecord attr;
    copyText(attr.displayName, list.displayName);
    copyText(attr.comment, list.comment);
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    copyText(attr.server, list.server);
    attr.port = list.port;
    copyText(attr.searchroot, list.searchroot);
    attr.authentication = list.authentication;
    attr.schematype = list.schematype;
    copyText(attr.username, list.username);
    if (list.password) copyText(attr.password, *list.password);
    copyText(attr.filter, list.filter);
    return attr;
}

const std::vector<std::string>& addressesOf(const NormalList& list) {
    static const std::vector<std::string> kNone;
    return list.addresses ? *list.addresses : kNone;
}

const std::vector<std::string>& addressesOf(const AddressList& list) {
    static const std::vector<std::string> kNone;
    const auto* normal = std::get_if<NormalList>(&list);
    return normal == nullptr ? kNone : addressesOf(*normal);
}

// Adds what differs in the attributes that lists of all kinds have.
template <class Before, class After>
void compareCommon(std::vector<std::string>& details, const Before& before, const After& after) {
    compare(details, "displayName", before.displayName, after.displayName);
    compare(details, "comment", before.comment, after.comment);
}

std::vector<std::string> differences(const DirectoryList& current, const DirectoryList& wanted) {
    std::vector<std::string> details;
    compareCommon(details, current, wanted);
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

class ListApply {
public:
    ListApply(ApplyContext& context, const ListHiveHandle& hive) : _context(context), _hive(hive) {}

    void remove(const std::string& name, const AddressList& list) {
        erase(name);
        const size_t count = addressesOf(list).size();
        std::vector<std::string> details;
        if (count != 0) details.push_back("with addresses: " + grouped(count));
        _context.changes.add(Change::Kind::Deleted, kWhat, name, details);
    }

    void create(const std::string& name, const AddressList& wanted) {
        make(name, wanted);
        std::vector<std::string> details;
        describeAddresses(details, {{}, addressesOf(wanted)});
        _context.changes.add(Change::Kind::Created, kWhat, name, details);
    }

    void change(const std::string& name, const AddressList& current, const AddressList& wanted) {
        std::vector<std::string> details;
        if (current.index() != wanted.index())
            details = replace(name, current, wanted);
        else if (const auto* normal = std::get_if<NormalList>(&wanted))
            details = changeNormal(name, std::get<NormalList>(current), *normal);
        else
            details = changeDirectory(name, std::get<DirectoryList>(current), std::get<DirectoryList>(wanted));
        if (!details.empty()) _context.changes.add(Change::Kind::Changed, kWhat, name, details);
    }

private:
    static constexpr const char* kWhat = "address list";

    void erase(const std::string& name) {
        int result = ZXPOL_S_OK;
        zxpol_deleteAddrList(_hive.get(), name.c_str(), &result);
        require(result, "cannot delete " + listText(name));
    }

    void make(const std::string& name, const AddressList& wanted) {
        const ListRecord attr = std::visit([](const auto& list) { return recordOf(list); }, wanted);
        int result = ZXPOL_S_OK;
        const ListHandle list(zxpol_createAddrList(_hive.get(), name.c_str(), &attr, &result));
        require(result, "cannot create " + listText(name));
        changeAddresses(list, listText(name), {{}, addressesOf(wanted)});
    }

    // Makes a list of the other kind of it. Written over, it would keep what belongs to its old kind: a password that
    // nothing shows any more, or addresses that count again as soon as somebody changes the kind back. So it is deleted
    // and made anew, and its addresses are gone, as the file says of a directory list. Conditions name lists by their
    // names and do not notice.
    std::vector<std::string> replace(const std::string& name, const AddressList& current, const AddressList& wanted) {
        erase(name);
        make(name, wanted);
        const bool isDirectory = std::holds_alternative<DirectoryList>(wanted);
        std::vector<std::string> details{isDirectory ? "type: normal -> directory" : "type: directory -> normal"};
        std::visit([&](const auto& before, const auto& after) { compareCommon(details, before, after); }, current,
                   wanted);
        describeAddresses(details, {addressesOf(current), addressesOf(wanted)});
        return details;
    }

    std::vector<std::string> changeNormal(const std::string& name, const NormalList& current,
                                          const NormalList& wanted) {
        std::vector<std::string> details;
        compareCommon(details, current, wanted);
        const bool hasOtherAttributes = !details.empty();
        const AddressChanges changes =
            wanted.addresses ? addressChanges(addressesOf(current), addressesOf(wanted)) : AddressChanges{};
        describeAddresses(details, changes);
        if (details.empty()) return details;
        int result = ZXPOL_S_OK;
        const ListHandle list(zxpol_openAddrList(_hive.get(), name.c_str(), &result));
        const ListRecord attr = recordOf(wanted);
        if (hasOtherAttributes) zxpol_setAddrListAttrib(list.get(), &attr, &result);
        require(result, "cannot change " + listText(name));
        changeAddresses(list, listText(name), changes);
        return details;
    }

    // The interface writes a password with the other attributes, so that one which the file does not name is put back
    // as it was.
    std::vector<std::string> changeDirectory(const std::string& name, const DirectoryList& current,
                                             const DirectoryList& wanted) {
        std::vector<std::string> details = differences(current, wanted);
        if (details.empty()) return details;
        const KeyHandle key = openRawKey(_context.store.key(), "AddressList\\" + name);
        const std::string password = wanted.password ? "" : rawData(key.get(), "password", listText(name));
        const ListRecord attr = recordOf(wanted);
        int result = ZXPOL_S_OK;
        const ListHandle list(zxpol_openAddrList(_hive.get(), name.c_str(), &result));
        zxpol_setAddrListAttrib(list.get(), &attr, &result);
        if (ZX_SUCCESS(result) && !wanted.password)
            zxreg_setValue(key.get(), "password", ZXREG_PROTECTED_STRING, password.data(),
                           static_cast<uint32_t>(password.size()), &result);
        require(result, "cannot change " + listText(name));
        return details;
    }

    ApplyContext& _context;
    const ListHiveHandle& _hive;
};

}  // namespace

void applyLists(ApplyContext& context, const ListHiveHandle& hive, const Policy& current, const Policy& wanted) {
    ListApply apply(context, hive);
    for (const auto& [name, list] : current.lists)
        if (wanted.lists.count(name) == 0) apply.remove(name, list);
    for (const auto& [name, list] : wanted.lists) {
        const auto found = current.lists.find(name);
        if (found == current.lists.end())
            apply.create(name, list);
        else
            apply.change(name, found->second, list);
    }
}

}  // namespace tool
