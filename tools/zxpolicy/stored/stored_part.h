// The policy in a store without the contents of its lists, for commands that show a part of it.
#pragma once

#include <string>

#include "output/text.h"
#include "stored/policy_store_reader.h"

namespace tool {

// Reads it as it stood at one moment. Throws a ToolError.
inline Policy readPolicyWithoutLists(const std::string& location) {
    const Store store(location, Store::Missing::Refuse);
    store.requirePolicy();
    StoredPolicy stored = readPolicySnapshot(store, Secrets::Leave, ListParts::Names);
    requireNoProblems(stored.problems, "cannot show the policy in " + oneLine(location));
    return std::move(stored.policy);
}

}  // namespace tool
