// How findings name things.
#pragma once

#include <string>

#include "output/text.h"

namespace tool {

// The condition at an index, counted from 1.
inline std::string conditionText(const std::string& rulePath, size_t index) {
    return "rule " + oneLine(rulePath) + ", condition " + std::to_string(index + 1);
}

}  // namespace tool
