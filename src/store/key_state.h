// Which key it is, and whether anything at or below it has changed.
#pragma once

#include <cstdint>

#include "zxpolicy.h"

namespace zxpol {

// A key as the store's optional services describe it. Numbers that the store does not give are 0.
struct KeyState {
    uint64_t identity = 0;  // the same for all handles of one key, and no other key's
    uint64_t stamp = 0;     // another one whenever anything at or below the key has changed
};

// The stamp of a key now, 0 where the store gives none. Fails with the store's code.
uint64_t stampOf(_ZxPolComHandle* key, int* error);

// The state of a key now. Fails with the store's code.
KeyState stateOf(_ZxPolComHandle* key, int* error);

}  // namespace zxpol
