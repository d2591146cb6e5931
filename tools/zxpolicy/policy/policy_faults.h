// Whether a policy read from a store can stand in a policy file.
#pragma once

#include <string>
#include <vector>

#include "policy/policy_file.h"

namespace tool {

// One sentence for each name or text that a policy file must not hold, naming the rule, task or list concerned.
std::vector<std::string> policyFaults(const Policy& policy);

}  // namespace tool
