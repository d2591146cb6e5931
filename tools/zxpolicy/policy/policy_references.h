// What the conditions and outcomes of a policy refer to, and whether it is there.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "policy/policy_file.h"

namespace tool {

// The name of the address list that a side of a condition refers to: what stands behind its opening parenthesis but for
// the last character, whatever that is.
std::optional<std::string> referredList(const std::string& side);

// One line for each thing found, beginning with its place in the file.
struct ReferenceFaults {
    std::vector<std::string> dangling;  // sides of conditions that matching finds no list for
    std::vector<std::string> notes;     // texts of outcomes that name no classification, which they need not
};

ReferenceFaults findReferenceFaults(const YamlSource& source, const Policy& policy);

}  // namespace tool
