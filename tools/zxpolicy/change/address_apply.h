// Changes of the addresses of a list, in bulk.
#pragma once

#include <string>

#include "difference/address_changes.h"
#include "stored/handles.h"

namespace tool {

// Makes the changes in an open list, each with one call. Throws a StoreError.
void changeAddresses(const ListHandle& list, const std::string& where, const AddressChanges& changes);

}  // namespace tool
