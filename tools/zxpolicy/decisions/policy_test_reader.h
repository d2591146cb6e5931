// File of policy tests to model.
#pragma once

#include <string>
#include <vector>

#include "decisions/policy_test.h"

namespace tool {

// Reads the tests in `text`; `fileName` names it in errors. Throws a UsageError "FILE:LINE:COLUMN: ..." for whatever
// does not belong there: unknown keys, wrong types, duplicate names.
std::vector<PolicyTest> readPolicyTests(const std::string& fileName, const std::string& text);

}  // namespace tool
