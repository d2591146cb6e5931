#include "addrlist/addr_list.h"

#include <utility>

#include "store/store_value.h"

using namespace zxpol;

ZxPolAddrList::ZxPolAddrList(_ZxPolComHandle* listKey) : _key(listKey) {}

ZxPolAddrList::ZxPolAddrList(StoreKey listKey) : _key(std::move(listKey)) {}

ZxPolAddrList::~ZxPolAddrList() = default;

void ZxPolAddrList::_getCommonAttrib(_ZxPolCommAttrib* attr, int* error) {
    readText(_key.get(), "displayName", attr->displayName, error);
    if (succeeded(*error)) readText(_key.get(), "comment", attr->comment, error);
}

void ZxPolAddrList::_setCommonAttrib(const _ZxPolCommAttrib* attr, int* error) {
    writeText(_key.get(), "displayName", attr->displayName, error);
    if (succeeded(*error)) writeText(_key.get(), "comment", attr->comment, error);
}
