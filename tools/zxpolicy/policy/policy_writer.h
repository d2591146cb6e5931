// Model to policy file.
#pragma once

#include <string>

#include "policy/policy_file.h"

namespace tool {

// The policy as the text of a policy file. Equal policies give equal texts, byte for byte: what has no order of its
// own comes sorted, and what has its default value is left out.
std::string writePolicy(const Policy& policy);

}  // namespace tool
