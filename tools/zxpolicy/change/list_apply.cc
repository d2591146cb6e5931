#include <cstring>

#include "change/address_apply.h"
#include "change/apply_context.h"
#include "difference/attribute_differences.h"
#include "output/text.h"
#include "stored/list_store_reader.h"
#include "stored/raw_key.h"
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
        std::vector<std::string> details = attributeDifferences(current, wanted);
        if (current.index() != wanted.index())
            replace(name, current, wanted, details);
        else if (const auto* normal = std::get_if<NormalList>(&wanted))
            changeNormal(name, std::get<NormalList>(current), *normal, details);
        else
            changeDirectory(name, std::get<DirectoryList>(current), std::get<DirectoryList>(wanted), details);
        if (!details.empty()) _context.changes.add(Change::Kind::Changed, kWhat, name, details);
    }

private:
    using Details = std::vector<std::string>;

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
    void replace(const std::string& name, const AddressList& current, const AddressList& wanted, Details& details) {
        erase(name);
        make(name, wanted);
        describeAddresses(details, {addressesOf(current), addressesOf(wanted)});
    }

    void changeNormal(const std::string& name, const NormalList& current, const NormalList& wanted, Details& details) {
        const bool hasOtherAttributes = !details.empty();
        const AddressChanges changes =
            wanted.addresses ? addressChanges(addressesOf(current), addressesOf(wanted)) : AddressChanges{};
        describeAddresses(details, changes);
        if (details.empty()) return;
        int result = ZXPOL_S_OK;
        const ListHandle list(zxpol_openAddrList(_hive.get(), name.c_str(), &result));
        const ListRecord attr = recordOf(wanted);
        if (hasOtherAttributes) zxpol_setAddrListAttrib(list.get(), &attr, &result);
        require(result, "cannot change " + listText(name));
        changeAddresses(list, listText(name), changes);
    }

    // The interface writes a password with the other attributes, so that one which the file does not name is put back
    // as it was.
    void changeDirectory(const std::string& name, const DirectoryList& current, const DirectoryList& wanted,
                         Details& details) {
        if (wanted.password && wanted.password != current.password) details.emplace_back("password");
        if (details.empty()) return;
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
