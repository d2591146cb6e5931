// Changes of the addresses of a list, in bulk.
#pragma once

#include <string>
#include <vector>

#include "handles.h"

namespace tool {

// What is to be removed, as it is stored, and what is to be inserted.
struct AddressChanges {
    std::vector<std::string> removed;
    std::vector<std::string> added;
};

// What makes the list `current` hold the same addresses as `wanted`. One that is stored in another spelling, in letter
// case or quotes, is the same address and stays as it is.
AddressChanges addressChanges(const std::vector<std::string>& current, const std::vector<std::string>& wanted);

// Makes the changes in an open list, each with one call. Throws a StoreError.
void changeAddresses(const ListHandle& list, const std::string& where, const AddressChanges& changes);

// Adds one detail with the numbers of changes and the first few addresses, unless there are none.
void describeAddresses(std::vector<std::string>& details, const AddressChanges& changes);

// Texts as the library takes them: an array closed by a null pointer.
std::vector<const char*> textArray(const std::vector<std::string>& texts);

}  // namespace tool
