#include "change/address_apply.h"

#include "tool_error.h"

namespace tool {

void changeAddresses(const ListHandle& list, const std::string& where, const AddressChanges& changes) {
    int result = ZXPOL_S_OK;
    if (!changes.removed.empty()) zxpol_removeAddress(list.get(), textArray(changes.removed).data(), &result);
    require(result, "cannot remove addresses from " + where);
    if (!changes.added.empty()) zxpol_insertAddress(list.get(), textArray(changes.added).data(), &result);
    require(result, "cannot insert addresses into " + where);
}

std::vector<const char*> textArray(const std::vector<std::string>& texts) {
    std::vector<const char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace tool
