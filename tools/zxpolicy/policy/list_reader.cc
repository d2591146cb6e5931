#include "policy/list_reader.h"

#include <unordered_map>

#include "output/text.h"
#include "policy/address_text.h"
#include "policy/policy_check.h"
#include "policy/policy_keys.h"
#include "policy/unique_names.h"

namespace tool {

namespace {

DirectoryList readDirectoryList(const YamlReader& reader, const YamlFields& fields) {
    if (const YamlNode* addresses = fields.find("addresses"))
        reader.source().fail(
            addresses->place,
            "\"addresses\" cannot stand in a list of type directory: its members are in the directory");
    DirectoryList list;
    list.displayName = fields.text("displayName", kMaxName);
    list.comment = fields.text("comment", kMaxComment);
    list.server = fields.text("server", kMaxName);
    list.port = fields.number("port");
    list.searchroot = fields.text("searchroot", kMaxName);
    list.authentication = fields.number("authentication");
    list.schematype = fields.number("schematype");
    list.username = fields.text("username", kMaxName);
    if (const YamlNode* password = fields.find("password"))
        list.password = reader.text(*password, "\"password\"", kMaxPassword);
    list.filter = fields.text("filter", kMaxFilter);
    return list;
}

// Reads addresses, each of which may stand once, in whatever spelling.
std::vector<std::string> readAddresses(const YamlReader& reader, const YamlNode& node, const std::string& listName) {
    const std::string where = " of list " + inQuotes(listName, kMaxName);
    const auto fail = [&](const YamlNode& item, const std::string& address, const std::string& fault) {
        reader.source().fail(item.place, "address " + inQuotes(address) + where + " " + fault);
    };
    std::vector<std::string> addresses;
    std::unordered_map<std::string, size_t> seen;
    const std::string what = "an address" + where;
    for (const YamlNode& item : reader.sequence(node, "\"addresses\"" + where).items) {
        std::string address = reader.text(item, what, kAnyLength);
        const std::string fault = addressFault(address);
        if (!fault.empty()) fail(item, address, fault);
        const auto [found, isNew] = seen.emplace(addressKey(address), addresses.size());
        if (!isNew) {
            const std::string& first = addresses[found->second];
            fail(item, address, first == address ? "stands twice" : "is the same as " + inQuotes(first));
        }
        addresses.push_back(std::move(address));
    }
    return addresses;
}

NormalList readNormalList(const YamlReader& reader, const YamlFields& fields, const std::string& name) {
    for (const char* key : kDirectoryKeys)
        if (const YamlNode* value = fields.find(key))
            reader.source().fail(value->place, "\"" + std::string(key) + "\" belongs to a list of type directory");
    NormalList list;
    list.displayName = fields.text("displayName", kMaxName);
    list.comment = fields.text("comment", kMaxComment);
    if (const YamlNode* addresses = fields.find("addresses")) list.addresses = readAddresses(reader, *addresses, name);
    return list;
}

bool isDirectory(const YamlReader& reader, const YamlFields& fields) {
    const YamlNode* type = fields.find("type");
    if (type == nullptr) return false;
    const std::string word = reader.text(*type, "\"type\" of a list", kMaxName);
    if (word != "normal" && word != "directory")
        reader.source().fail(type->place, "\"type\" of a list must be normal or directory, not " + inQuotes(word));
    return word == "directory";
}

}  // namespace

void readLists(const YamlReader& reader, const YamlFields& top, Policy& policy) {
    UniqueNames names(reader.source(), "list");
    for (const YamlNode& node : top.items("lists")) {
        const YamlFields fields(reader, node, "a list", kListKeys);
        const YamlNode& nameNode = fields.need("name");
        const std::string name = reader.name(nameNode, "the name of a list");
        names.add(name, nameNode.place);
        if (isDirectory(reader, fields))
            policy.lists.emplace(name, readDirectoryList(reader, fields));
        else
            policy.lists.emplace(name, readNormalList(reader, fields, name));
    }
}

}  // namespace tool
