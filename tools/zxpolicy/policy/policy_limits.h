// How deep a policy file may nest.
#pragma once

#include <cstddef>

namespace tool {

constexpr size_t kMaxRuleDepth = 64;     // levels of rules, the root being the first
constexpr size_t kMaxSettingDepth = 16;  // levels of a task's settings

}  // namespace tool
