// Policy file to model.
#pragma once

#include <string>

#include "policy/policy_file.h"

namespace tool {

// Reads the policy in `text`; `fileName` names it in errors. Throws a PolicyError "FILE:LINE:COLUMN: ..." for whatever
// does not belong there: unknown keys, wrong types, duplicate names, and what the store could not give back as written.
Policy readPolicy(const std::string& fileName, const std::string& text);

// What messages call a file; - is standard input.
std::string fileTitle(const std::string& file);

// The content of a file; - is standard input. Throws a UsageError when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace tool
