// What differs between two policies, as plain data: what apply would do to make the second of the first.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "difference/change_log.h"
#include "policy/policy_file.h"

namespace tool {

constexpr const char* kListWord = "address list";

// Some addresses: how many, and the first of them.
struct AddressSamples {
    size_t count = 0;
    std::vector<std::string> first;
};

struct AddressDifference {
    AddressSamples added;
    AddressSamples removed;
};

struct PolicyDiff {
    ChangeLog changes;
    std::map<std::string, AddressDifference> lists;  // those whose addresses differ, by name
};

// Keeps at most `samples` addresses of each kind for each list. Addresses in another order or spelling are the same,
// and so are classifications in another order. What one policy does not say, addresses or a password, is not compared.
PolicyDiff differencesOf(const Policy& before, const Policy& after, size_t samples);

}  // namespace tool
