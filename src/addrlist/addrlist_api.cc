// The flat functions on address lists.
#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "frame/frame.h"

using namespace zxpol;

// ---- the hive -----------------------------------------------------------------------------------------

_ZxPolComHandle* zxpol_openAddrListHive(_ZxPolComHandle* key, int* error) {
    return frame::openHive<ZxPolAddrListHive>(
        key, error, [&](_ZxPolComHandle* storeKey) { return ZxPolAddrListHive::open(storeKey, error); });
}

void zxpol_closeAddrListHive(_ZxPolComHandle* hive, int* error) {
    frame::close<ZxPolAddrListHive>(hive, error);
}

_ZxPolComHandle* zxpol_createAddrList(_ZxPolComHandle* hive, const char* name, const _ZxPolAddrListAttr* attr,
                                      int* error) {
    return frame::open<ZxPolAddrListHive, ZxPolAddrList>(
        hive, error, [&](ZxPolAddrListHive& lists) { return lists.createAddrList(name, attr, error); });
}

_ZxPolComHandle* zxpol_openAddrList(_ZxPolComHandle* hive, const char* name, int* error) {
    return frame::open<ZxPolAddrListHive, ZxPolAddrList>(
        hive, error, [&](ZxPolAddrListHive& lists) { return lists.openAddrList(name, error); });
}

void zxpol_enumAddrList(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolAddrListHive>(hive, error,
                                   [&](ZxPolAddrListHive& lists) { lists.enumAddrList(index, buffer, size, error); });
}

void zxpol_deleteAddrList(_ZxPolComHandle* hive, const char* name, int* error) {
    frame::call<ZxPolAddrListHive>(hive, error, [&](ZxPolAddrListHive& lists) { lists.deleteAddrList(name, error); });
}

// Nothing is cached of directories: all that there is to tell is whether there is a list.
void zxpol_refreshLdapCache(_ZxPolComHandle* hive, int* error) {
    frame::call<ZxPolAddrListHive>(hive, error, [&](ZxPolAddrListHive& lists) {
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        lists.enumAddrList(0, name, &size, error);
    });
}

// ---- a list -------------------------------------------------------------------------------------------

void zxpol_closeAddrList(_ZxPolComHandle* list, int* error) {
    frame::close<ZxPolAddrList>(list, error);
}

void zxpol_getAddrListAttrib(_ZxPolComHandle* list, _ZxPolAddrListAttr* attr, int* error) {
    frame::call<ZxPolAddrList>(list, error, [&](ZxPolAddrList& addresses) { addresses.getAttrib(attr, error); });
}

void zxpol_setAddrListAttrib(_ZxPolComHandle* list, const _ZxPolAddrListAttr* attr, int* error) {
    frame::call<ZxPolAddrList>(list, error, [&](ZxPolAddrList& addresses) { addresses.setAttrib(attr, error); });
}

void zxpol_insertAddress(_ZxPolComHandle* list, const char** addresses, int* error) {
    frame::call<ZxPolAddrList>(list, error, [&](ZxPolAddrList& into) { into.insertAddresses(addresses, error); });
}

void zxpol_removeAddress(_ZxPolComHandle* list, const char** addresses, int* error) {
    frame::call<ZxPolAddrList>(list, error, [&](ZxPolAddrList& from) { from.removeAddresses(addresses, error); });
}

void zxpol_importAddress(_ZxPolComHandle* list, uint32_t format, uint32_t replace, const char* path, int* error) {
    frame::call<ZxPolAddrList>(
        list, error, [&](ZxPolAddrList& addresses) { addresses.importAddresses(format, replace, path, error); });
}

void zxpol_enumAddress(_ZxPolComHandle* list, uint32_t index, char* buffer, uint32_t* size, int* error) {
    frame::call<ZxPolAddrList>(list, error,
                               [&](ZxPolAddrList& addresses) { addresses.enumAddress(index, buffer, size, error); });
}
