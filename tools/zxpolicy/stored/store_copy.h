// Copying a store.
#pragma once

#include "stored/store.h"

namespace tool {

// Copies all keys and values of `from` into `to`, which is empty, as they stood at one moment, whatever other processes
// do meanwhile. Protected values come out empty: they stay where their key is. Throws a StoreError.
void copyStore(const Store& from, const Store& to);

}  // namespace tool
