// The rules of a store that refer to an address list or a classification.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stored/store.h"
#include "zxpolicy.h"

namespace tool {

// A side of a condition, or an outcome, that refers to the name.
struct ReferringPlace {
    uint32_t condition = 0;  // its number from 1; 0 for an outcome
    std::string side;        // sender or receiver
    std::string task;        // the full name
    std::string outcome;
    std::string text;      // as the store has it
    std::string referred;  // the name in it, which may differ from the one asked for in letter case
};

struct ReferringRule {
    std::string path;
    std::vector<ReferringPlace> places;
};

struct References {
    std::optional<std::string> checker;  // the rule that the library's reference checker answers
    std::vector<ReferringRule> rules;    // that one first, then those below a rule before the rule, in their order
};

// Finds all references, in whatever letter case. Throws a StoreError where the store cannot be read, or where the
// checker answers another rule than the first one that it should find: what cannot be read may refer to the name.
References findReferences(const Store& store, ZxPolRefEntity entity, const std::string& name);

}  // namespace tool
