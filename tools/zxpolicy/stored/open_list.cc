#include "stored/open_list.h"

#include <algorithm>

#include "output/text.h"
#include "policy/policy_check.h"
#include "result_names.h"
#include "stored/names_of.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr const char* kAdvice = "zxpolicy list shows those that there are";

}  // namespace

ListHive::ListHive(const Store& store) : _store(store) {
    store.requirePolicy();
    int result = ZXPOL_S_OK;
    // The flat function refuses a store of a later version.
    _handle = ListHiveHandle(zxpol_openAddrListHive(store.key(), &result));
    if (ZX_SUCCESS(result)) _hive.reset(ZxPolAddrListHive::open(store.key(), &result));
    require(result, "cannot open the address lists in " + oneLine(store.location()));
}

std::vector<std::string> ListHive::names() const {
    return namesOf(zxpol_enumAddrList, _handle.get(), "the address lists");
}

bool ListHive::has(const std::string& name) const {
    const std::vector<std::string> all = names();
    return std::find(all.begin(), all.end(), name) != all.end();
}

std::unique_ptr<ZxPolAddrList> ListHive::open(const std::string& name, const std::string& advice) const {
    if (!has(name))
        throw PolicyError("there is no " + listText(name) + " in " + oneLine(_store.location()) + ": " +
                          codeText(ZXPOL_E_NOT_FOUND) + ": " + advice);
    int result = ZXPOL_S_OK;
    std::unique_ptr<ZxPolAddrList> list(_hive->openAddrList(name.c_str(), &result));
    require(result, "cannot open " + listText(name));
    return list;
}

std::unique_ptr<ZxPolNormalAddrList> ListHive::openNormal(const std::string& name, const std::string& advice) const {
    std::unique_ptr<ZxPolAddrList> list = open(name, advice);
    auto* normal = dynamic_cast<ZxPolNormalAddrList*>(list.get());
    if (normal == nullptr)
        throw PolicyError(listText(name) + " is a directory list: " + codeText(ZXPOL_E_NOT_SUPPORTED) +
                          ": its members are in the directory; see and change them there");
    list.release();
    return std::unique_ptr<ZxPolNormalAddrList>(normal);
}

std::unique_ptr<ZxPolNormalAddrList> ListHive::openNormal(const std::string& name) const {
    return openNormal(name, kAdvice);
}

void ListHive::create(const std::string& name) const {
    const std::string fault = nameFault(name);
    if (!fault.empty()) throw UsageError("the name of " + listText(name) + " " + fault);
    for (const std::string& other : names())
        if (lowerCase(other) == lowerCase(name))
            throw PolicyError("cannot create " + listText(name) + ": it differs from " + inQuotes(other, kMaxName) +
                              " only in letter case; use that one");
    _ZxPolAddrListAttr attr{};
    attr.type = ZXPOL_ADDRLIST_NORMAL;
    int result = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolAddrList> list(_hive->createAddrList(name.c_str(), &attr, &result));
    require(result, "cannot create " + listText(name));
}

EnumerateAddress enumerationOf(ZxPolAddrList& list) {
    return [&list](uint32_t index, char* buffer, uint32_t* size, int* result) {
        list.enumAddress(index, buffer, size, result);
    };
}

}  // namespace tool
