// The life of a policy on a host's own store: made, read, matched, changed, deleted.
#pragma once

#include "zxpolicy.h"

namespace zxtest {

// Runs it below the store key `store` and reports deviations as test failures. The store is empty afterwards, but for
// the hives.
void livePolicyLife(_ZxPolComHandle* store);

}  // namespace zxtest
