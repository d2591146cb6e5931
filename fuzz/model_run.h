// What a target does on a list and on its slow model at once.
#pragma once

#include "model/sequence.h"

namespace fuzz {

// Does the steps on a list in a store of its own; fails at the first difference from the model.
void runBesideModel(const model::Sequence& sequence);

}  // namespace fuzz
