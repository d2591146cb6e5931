// The keys that may stand in the maps of a file of policy tests.
#pragma once

#include "policy/policy_keys.h"

namespace tool {

inline const Keys kTestFileKeys{"zxpolicyTest", "tests"};
inline const Keys kPolicyTestKeys{"name", "sender", "mode", "priority", "weight", "expect"};
inline const Keys kExpectationKeys{"receiver", "rule", "tasks"};

}  // namespace tool
