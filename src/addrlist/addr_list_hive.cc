#include "addrlist/addr_list_hive.h"

#include <utility>

#include "addrlist/addr_list.h"
#include "addrlist/ldap_addr_list.h"
#include "addrlist/normal_addr_list.h"
#include "store/store_key.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

constexpr const char* kHiveKey = "AddressList";
constexpr const char* kTypeValue = "type";

using List = std::unique_ptr<ZxPolAddrList>;

// Makes the object for a list of the given kind on its open key: the one place that knows all kinds of lists.
List makeList(uint32_t type, StoreKey listKey, const char* name, int* error) {
    switch (type) {
        case ZXPOL_ADDRLIST_DIRECTORY:
            return std::make_unique<ZxPolLdapAddrList>(std::move(listKey));
        case ZXPOL_ADDRLIST_NORMAL:
            return std::make_unique<ZxPolNormalAddrList>(std::move(listKey), name, error);
        default:
            *error = ZXPOL_E_INVALID_FORMAT;
            return nullptr;
    }
}

// Why no list may be made of these, or success.
int whyNotCreated(const char* name, const _ZxPolAddrListAttr* attr) {
    if (name == nullptr || *name == '\0' || attr == nullptr) return ZXPOL_E_INVALID_ARG;
    switch (attr->type) {
        case ZXPOL_ADDRLIST_DIRECTORY:
            return ZxPolLdapAddrList::isValidAttrib(attr) ? ZXPOL_S_OK : ZXPOL_E_INVALID_ARG;
        case ZXPOL_ADDRLIST_NORMAL:
            return ZxPolNormalAddrList::isValidAttrib(attr) ? ZXPOL_S_OK : ZXPOL_E_INVALID_ARG;
        default:
            return ZXPOL_E_INVALID_ARG;
    }
}

}  // namespace

ZxPolAddrListHive::ZxPolAddrListHive(_ZxPolComHandle* hiveKey) : ZxPolKeyEntity(hiveKey, 0, "", 1) {}

ZxPolAddrListHive* ZxPolAddrListHive::open(_ZxPolComHandle* parent, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey hiveKey = StoreKey::create(parent, kHiveKey, error);
    if (!hiveKey) return nullptr;
    return new ZxPolAddrListHive(hiveKey.release());
}

ZxPolAddrList* ZxPolAddrListHive::openAddrList(const char* name, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey listKey(openChild(name, error));
    if (failed(*error) || !listKey) return nullptr;
    uint32_t type = 0;
    readNumber(listKey.get(), kTypeValue, &type, error);
    if (failed(*error)) return nullptr;
    List list = makeList(type, std::move(listKey), name, error);
    return succeeded(*error) ? list.release() : nullptr;
}

ZxPolAddrList* ZxPolAddrListHive::createAddrList(const char* name, const _ZxPolAddrListAttr* attr, int* error) {
    if (error == nullptr) return nullptr;
    *error = whyNotCreated(name, attr);
    if (failed(*error)) return nullptr;
    return inUpdate(_entityKey(), error,
                    [&]() -> List {
                        StoreKey listKey(createChild(name, error, nullptr));
                        if (failed(*error) || !listKey) return nullptr;
                        List list = makeList(attr->type, std::move(listKey), name, error);
                        if (failed(*error)) return nullptr;
                        list->setAttrib(attr, error);
                        if (*error == ZXPOL_E_NOT_SUPPORTED) *error = ZXPOL_S_OK;
                        return succeeded(*error) ? std::move(list) : nullptr;
                    })
        .release();
}

void ZxPolAddrListHive::deleteAddrList(const char* name, int* error) {
    if (error == nullptr) return;
    // Whatever comes of the deletion.
    struct ClearCache {
        const char* name;
        int* error;
        ~ClearCache() { ZxPolNormalAddrList::clearAddrCacheByName(name, error); }
    } const clear{name, error};
    deleteChild(name, error);
}

void ZxPolAddrListHive::enumAddrList(uint32_t index, char* buffer, uint32_t* size, int* error) {
    enumChild(index, buffer, size, error);
}
