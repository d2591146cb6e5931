// Texts of conditions in a rule.
#pragma once

#include "bytes.h"

namespace fuzz {

// Writes the parts of an input as the root rule's conditions, and compares what is enumerated and what matches with
// what a slow reader makes of the texts.
void checkStoredConditions(Bytes& bytes);

}  // namespace fuzz
