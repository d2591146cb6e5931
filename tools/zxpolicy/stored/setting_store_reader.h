// The settings of tasks and actions as the store has them.
#pragma once

#include "policy/policy_file.h"
#include "zxpolicy.h"

namespace tool {

// Reads everything below a key "setting". Throws a StoreError.
Setting readStoredSetting(_ZxPolComHandle* key);

}  // namespace tool
