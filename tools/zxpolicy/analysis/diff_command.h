// The command diff.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "decisions/matcher.h"
#include "output/output_format.h"
#include "tool_error.h"

namespace tool {

struct DiffOptions {
    std::string before;  // a store's location, or the path of a policy file
    std::string after;
    MatchOptions match;    // of the decisions
    uint32_t samples = 5;  // of the addresses of one list, in each direction, or of the kinds of mails of one change
    OutputFormat format = OutputFormat::Text;
};

// Standard input is read once: throws a UsageError when both policies are to come from there.
void requireSeparateFiles(const DiffOptions& options);

// Prints what differs; kAnswerIsNo when anything does. Passwords are compared where both policies have them, and never
// shown. Throws a ToolError.
ExitStatus runDiff(const DiffOptions& options, std::ostream& out);

}  // namespace tool
