// The tasks of a policy file.
#pragma once

#include <string>

#include "policy/policy_file.h"
#include "policy/yaml_fields.h"

namespace tool {

// Reads a task of the rule at `rulePath`. Throws a PolicyError.
Task readTask(const YamlReader& reader, const YamlNode& node, const std::string& rulePath);

}  // namespace tool
