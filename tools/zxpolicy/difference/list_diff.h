// What differs between the address lists of two policies.
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "difference/policy_diff.h"

namespace tool {

using AddressLists = std::map<std::string, AddressList>;

// Adds the lists that came, went or changed to the differences, with at most `samples` addresses of each kind.
void compareLists(const AddressLists& before, const AddressLists& after, size_t samples, PolicyDiff& diff);

}  // namespace tool
