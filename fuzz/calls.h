// All calls of the flat interface that a sequence is made of.
#pragma once

#include <vector>

#include "arguments.h"

namespace fuzz {

// Makes a call with these arguments, keeps what it opens and gives back its records.
using Call = void (*)(Arguments&);

// The order is part of the inputs' meaning: new ones go to the end.
const std::vector<Call>& allCalls();

}  // namespace fuzz
