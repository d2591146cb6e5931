// Looks for what a store holds and a policy file cannot say.
#pragma once

#include <string>
#include <vector>

#include "stored/handles.h"
#include "stored/policy_store_reader.h"

namespace tool {

// One sentence for each key or value that does not belong to a policy, is missing, or is not of the form that it
// should have, each naming the rule, task or list concerned. What stands beside the hives of the policy does not count.
// The contents of lists of which only the names are read are not looked at. Throws a StoreError when the store cannot
// be read.
std::vector<std::string> auditStore(_ZxPolComHandle* store, ListParts parts);

}  // namespace tool
