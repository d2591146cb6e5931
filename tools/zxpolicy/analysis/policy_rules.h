// The rules and lists of a store as matching sees them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "stored/store.h"

namespace tool {

// A rule by its number in the tree: 0 is the root, parents come before their children.
struct StoredRule {
    struct Condition {
        std::string sender;
        std::string receiver;
        bool isReadable = true;  // else its text is none, and the sides are those of the condition before
    };

    std::string path;
    std::string key;  // of the rule, seen from the store's
    uint32_t parent = 0;
    std::vector<uint32_t> children;  // in order
    std::vector<Condition> conditions;
    bool isOfOtherType = false;  // its matchType is not 0: what conditions it has are not compared
};

// An address list that a condition names.
struct ConditionList {
    int failure = 0;  // what every look into it ends with; a success for a list that can be looked into
    bool isDirectory = false;
    std::vector<std::string> entries;
};

struct StoredRules {
    std::vector<StoredRule> rules;
    std::map<std::string, ConditionList> lists;  // by name, all that conditions name
};

// Reads them; the caller knows that the store does not change meanwhile. Throws a StoreError.
StoredRules readStoredRules(const Store& store);

// The list that matching asks for a side of a condition: any side that begins with "(" is a reference, to the text
// without its first and its last character.
std::optional<std::string> listAskedFor(const std::string& side);

}  // namespace tool
