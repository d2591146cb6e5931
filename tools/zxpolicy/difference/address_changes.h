// What differs between the addresses of two lists.
#pragma once

#include <string>
#include <vector>

namespace tool {

// What is to be removed, as it is stored, and what is to be inserted.
struct AddressChanges {
    std::vector<std::string> removed;
    std::vector<std::string> added;
};

// What makes the list `current` hold the same addresses as `wanted`. One that is stored in another spelling, in letter
// case or quotes, is the same address and stays as it is.
AddressChanges addressChanges(const std::vector<std::string>& current, const std::vector<std::string>& wanted);

// Adds one detail with the numbers of changes and the first few addresses, unless there are none.
void describeAddresses(std::vector<std::string>& details, const AddressChanges& changes);

}  // namespace tool
