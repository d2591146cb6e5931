// The command diff --decisions.
#pragma once

#include <iosfwd>

#include "analysis/diff_command.h"
#include "tool_error.h"

namespace tool {

// Prints which mails the two policies decide differently, by rule and by the names of its tasks, or that there are
// none; kAnswerIsNo when there are. Throws a ToolError.
ExitStatus runDiffDecisions(const DiffOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
