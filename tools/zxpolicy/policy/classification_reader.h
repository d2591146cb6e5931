// The classifications of a policy file.
#pragma once

#include <vector>

#include "policy/policy_file.h"
#include "policy/yaml_fields.h"

namespace tool {

// Reads the key "classifications" of the whole file; none when it is absent. Throws a PolicyError.
std::vector<Classification> readClassifications(const YamlReader& reader, const YamlFields& top);

}  // namespace tool
