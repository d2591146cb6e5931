// Policy tests: mails, and what is expected to become of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "decisions/matcher.h"
#include "policy/yaml_tree.h"

namespace tool {

// What is expected for one receiver.
struct Expectation {
    std::string receiver;
    std::string rule;                               // its path; empty for no rule
    std::optional<std::vector<std::string>> tasks;  // full names in order; absent: whatever they are
};

// One mail.
struct PolicyTest {
    std::string name;
    std::string sender;  // empty for the null sender
    MatchOptions match;
    std::vector<Expectation> expectations;
    Place place;
};

}  // namespace tool
