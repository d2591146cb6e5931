#include "change/address_apply.h"

#include "stored/text_array.h"
#include "tool_error.h"

namespace tool {

void changeAddresses(const ListHandle& list, const std::string& where, const AddressChanges& changes) {
    int result = ZXPOL_S_OK;
    if (!changes.removed.empty()) zxpol_removeAddress(list.get(), textArray(changes.removed).data(), &result);
    require(result, "cannot remove addresses from " + where);
    if (!changes.added.empty()) zxpol_insertAddress(list.get(), textArray(changes.added).data(), &result);
    require(result, "cannot insert addresses into " + where);
}

}  // namespace tool
