// What must always hold of policies that are read from files and stores.
#pragma once

#include <optional>
#include <string>

#include "policy/policy_file.h"
#include "stored/store.h"
#include "tool_error.h"

namespace fuzz {

// All that a store holds.
std::string contentOf(const tool::Store& store);

// The message of a refusal must be one line.
void requireOneLine(const tool::ToolError& error);

// Fails when the two differ.
void requireSamePolicy(const tool::Policy& right, const tool::Policy& found, const char* when);

// Makes a store hold a policy. False when that is refused. The store is as before then, and after a dry run.
bool apply(const tool::Store& store, const tool::Policy& policy, bool isDryRun = false);

// That the store holds the policy, and that applying its dump changes nothing.
void checkStored(const tool::Store& store, const tool::Policy& policy);

// Else the caches of lists of thousands of names would stay in memory.
void forgetLists(const tool::Policy& policy);

}  // namespace fuzz
