// The settings of tasks and actions in a policy file.
#pragma once

#include <string>

#include "policy/policy_file.h"
#include "policy/yaml_fields.h"

namespace tool {

// Reads the map under the key "setting", if there is one; `what` names what it belongs to, such as "a task". Throws a
// PolicyError.
Setting readSetting(const YamlReader& reader, const YamlFields& fields, const std::string& what);
// Reads such a map by itself.
Setting readSetting(const YamlReader& reader, const YamlNode& map);

}  // namespace tool
