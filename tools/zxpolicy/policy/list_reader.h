// The address lists of a policy file.
#pragma once

#include "policy/policy_file.h"
#include "policy/yaml_fields.h"

namespace tool {

// Reads the lists in the map `top` of a policy file. Throws a PolicyError, also for addresses that are invalid or stand
// twice in a list.
void readLists(const YamlReader& reader, const YamlFields& top, Policy& policy);

}  // namespace tool
