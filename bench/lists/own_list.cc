#include "own_list.h"

#include "harness.h"

namespace bench {

namespace {

// The array that the flat functions take.
std::vector<const char*> pointersTo(const Entries& entries) {
    std::vector<const char*> pointers;
    pointers.reserve(entries.size() + 1);
    for (const std::string& entry : entries)
        pointers.push_back(entry.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

// Walks the addresses of the list and passes each to `use`.
template <typename Use>
void walk(_ZxPolComHandle* list, Use use) {
    char address[ZXPOL_ADDRESS_SIZE];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof address;
        int error = ZXPOL_S_OK;
        zxpol_enumAddress(list, index, address, &size, &error);
        if (error == ZXPOL_E_NO_MORE_ITEMS) return;
        require(error, "enumerating");
        use(address);
    }
}

class OpenList : public Contestant {
public:
    explicit OpenList(ZxPolAddrList* list) : _list(list) {}
    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        int error = ZXPOL_S_OK;
        for (size_t i = 0; i < count; ++i) {
            uint32_t weight = 0;
            const bool isMatch = _list->matchAddress(queries.all()[i].text, &weight, ZXPOL_WEIGHT_DOMAIN_FIRST, &error);
            weights[i] = isMatch ? weight : 0;
        }
        require(error, "matching");
    }

private:
    const std::unique_ptr<ZxPolAddrList> _list;
};

}  // namespace

void HandleCloser::operator()(_ZxPolComHandle* handle) const {
    int error = ZXPOL_S_OK;
    switch (handle->kind) {
        case ZXPOL_HANDLE_ADDRLIST:
            return zxpol_closeAddrList(handle, &error);
        case ZXPOL_HANDLE_ADDRLIST_HIVE:
            return zxpol_closeAddrListHive(handle, &error);
        default:
            return zxreg_closeKey(handle, &error);
    }
}

Handle openStore(const std::string& location) {
    int error = ZXREG_S_OK;
    Handle store(zxreg_openStore(location.c_str(), &error));
    require(error, location);
    return store;
}

OwnList::OwnList(const std::string& location) : _store(openStore(location)) {
    int error = ZXPOL_S_OK;
    _hiveHandle.reset(zxpol_openAddrListHive(_store.get(), &error));
    require(error, "opening the hive");
    _hiveKey.reset(zxreg_openKey(_store.get(), "AddressList", &error));
    require(error, "opening the key of the hive");
    _hive.reset(ZxPolAddrListHive::open(_store.get(), &error));
    require(error, "opening the hive");
    _list.reset(zxpol_openAddrList(_hiveHandle.get(), name, &error));
    if (error >= 0) return;
    const _ZxPolAddrListAttr attributes{};
    error = ZXPOL_S_OK;
    _list.reset(zxpol_createAddrList(_hiveHandle.get(), name, &attributes, &error));
    require(error, "creating the list");
}

void OwnList::import(const std::string& path) const {
    int error = ZXPOL_S_OK;
    zxpol_importAddress(_list.get(), 0, 0, path.c_str(), &error);
    require(error, "importing " + path);
}

void OwnList::insert(const Entries& entries) const {
    int error = ZXPOL_S_OK;
    zxpol_insertAddress(_list.get(), pointersTo(entries).data(), &error);
    require(error, "inserting");
}

void OwnList::remove(const Entries& entries) const {
    int error = ZXPOL_S_OK;
    zxpol_removeAddress(_list.get(), pointersTo(entries).data(), &error);
    require(error, "removing");
}

size_t OwnList::enumerate() const {
    size_t count = 0;
    walk(_list.get(), [&](const char*) { ++count; });
    return count;
}

Entries OwnList::addresses() const {
    Entries entries;
    walk(_list.get(), [&](const char* address) { entries.emplace_back(address); });
    return entries;
}

bool OwnList::has(const std::string& address) const {
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolAddrList> list(_hive->openAddrList(name, &error));
    require(error, "opening the list");
    return list->matchAddress(address.c_str(), nullptr, ZXPOL_WEIGHT_DOMAIN_FIRST, &error);
}

std::unique_ptr<Contestant> OwnList::contestant() const {
    int error = ZXPOL_S_OK;
    ZxPolAddrList* const list = _hive->openAddrList(name, &error);
    require(error, "opening the list");
    return std::make_unique<OpenList>(list);
}

}  // namespace bench
