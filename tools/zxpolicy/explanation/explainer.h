// Making explanations.
#pragma once

#include "explanation/explanation.h"

namespace tool {

// Says how a mail is decided. A match that fails leaves its result in the explanation, and what it came to before that.
// Throws a ToolError.
Explanation explain(const Store& store, const MatchOptions& options, const Envelope& envelope);

}  // namespace tool
