// The tasks that matched rules ask for, as a store has them.
#pragma once

#include "decisions/matcher.h"

namespace tool {

// Keeps the policy of the store open. Throws a StoreError.
TaskLookup lookupTasks(const Store& store);

}  // namespace tool
