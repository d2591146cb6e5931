// The command diff --decisions.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "matcher.h"
#include "output_format.h"
#include "tool_error.h"

namespace tool {

struct DiffDecisionsOptions {
    std::string before;  // a store's location, or the path of a policy file
    std::string after;
    MatchOptions match;
    uint32_t samples = 5;  // kinds of mails that are told of each change
    OutputFormat format = OutputFormat::Text;
};

// Prints which mails the two policies decide differently, or that there are none; kAnswerIsNo when there are. Throws a
// ToolError.
ExitStatus runDiffDecisions(const DiffDecisionsOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
