#include "threads/list_client.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "zxregistry.h"

namespace threads {
namespace {}  // namespace

ListClient::ListClient(const std::string& location, const std::string& list) : _name(list) {
    int error = ZXPOL_S_OK;
    _store = zxreg_openStore(location.c_str(), &error);
    check(error, "opening the store");
    _hive.reset(ZxPolAddrListHive::open(_store, &error));
    if (error >= 0) return;
    int ignored = ZXPOL_S_OK;
    zxreg_closeKey(_store, &ignored);
    check(error, "opening the hive");
}

ListClient::~ListClient() {
    int error = ZXPOL_S_OK;
    _list.reset();
    _hive.reset();
    zxreg_closeKey(_store, &error);
}

void ListClient::create() {
    const _ZxPolAddrListAttr attr = {};
    int error = ZXPOL_S_OK;
    _list.reset();
    _list.reset(_hive->createAddrList(_name.c_str(), &attr, &error));
    check(error, "creating the list");
}

void ListClient::remove() {
    int error = ZXPOL_S_OK;
    _list.reset();
    _hive->deleteAddrList(_name.c_str(), &error);
    check(error, "deleting the list");
}

void ListClient::open() {
    int error = ZXPOL_S_OK;
    _list.reset();
    _list.reset(_hive->openAddrList(_name.c_str(), &error));
    check(error, "opening the list");
}

void ListClient::close() {
    _list.reset();
}

void ListClient::insert(const Addresses& addresses) {
    int error = ZXPOL_S_OK;
    _list->insertAddresses(arrayOf(addresses).data(), &error);
    check(error, "inserting");
}

bool ListClient::erase(const Addresses& addresses) {
    int error = ZXPOL_S_OK;
    _list->removeAddresses(arrayOf(addresses).data(), &error);
    if (error == ZXPOL_E_NOT_FOUND) return false;
    check(error, "removing");
    return true;
}

void ListClient::import(const std::string& path, bool isReplacing) {
    int error = ZXPOL_S_OK;
    _list->importAddresses(0, isReplacing ? 1 : 0, path.c_str(), &error);
    check(error, "importing");
}

bool ListClient::matches(const std::string& address) const {
    int error = ZXPOL_S_OK;
    return _list->matchAddress(address.c_str(), nullptr, ZXPOL_WEIGHT_DOMAIN_FIRST, &error);
}

uint32_t ListClient::weight(const std::string& address) const {
    uint32_t weight = 0;
    int error = ZXPOL_S_OK;
    _list->matchAddress(address.c_str(), &weight, ZXPOL_WEIGHT_DOMAIN_FIRST, &error);
    return weight;
}

Addresses ListClient::entries() const {
    Addresses found;
    for (uint32_t index = 0;; ++index) {
        char text[ZXPOL_ADDRESS_SIZE];
        uint32_t size = sizeof text;
        int error = ZXPOL_S_OK;
        _list->enumAddress(index, text, &size, &error);
        if (error == ZXPOL_E_NO_MORE_ITEMS) return found;
        check(error, "enumerating");
        found.emplace_back(text);
    }
}

Addresses ListClient::storedEntries() const {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* const key = zxreg_openKey(_store, ("AddressList\\" + _name).c_str(), &error);
    check(error, "opening the list's key");
    Addresses found;
    for (unsigned number = 1;; ++number) {
        char image[4096];
        uint32_t size = sizeof image;
        zxreg_queryValue(key, ("address" + std::to_string(number)).c_str(), nullptr, image, &size, &error);
        if (error < 0) break;
        for (uint32_t at = 0; at < size && image[at] != '\0'; at += static_cast<uint32_t>(found.back().size()) + 1)
            found.emplace_back(image + at);
    }
    int ignored = ZXPOL_S_OK;
    zxreg_closeKey(key, &ignored);
    return found;
}

AddressFile::AddressFile(const Addresses& addresses) {
    const char* const folder = std::getenv("TMPDIR");
    _path = std::string(folder != nullptr ? folder : "/tmp") + "/zxpolicy-addresses-XXXXXX";
    ::close(mkstemp(_path.data()));
    std::ofstream file(_path);
    for (const std::string& address : addresses)
        file << address << '\n';
}

AddressFile::~AddressFile() {
    std::remove(_path.c_str());
}

Addresses numbered(const std::string& prefix, size_t count, const std::string& end) {
    Addresses addresses;
    for (size_t i = 0; i < count; ++i)
        addresses.push_back(prefix + std::to_string(i) + end);
    return addresses;
}

}  // namespace threads
