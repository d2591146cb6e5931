// The rules of a policy file.
#pragma once

#include "policy/policy_file.h"
#include "policy/yaml_fields.h"

namespace tool {

// Reads the root rule with all below it. Throws a PolicyError.
Rule readRootRule(const YamlReader& reader, const YamlNode& node);

}  // namespace tool
