// The command lint.
#pragma once

#include <iosfwd>
#include <string>

#include "decisions/matcher.h"
#include "output/output_format.h"
#include "tool_error.h"

namespace tool {

struct LintOptions {
    std::string store;
    std::string policy;     // a store's location, or the path of a policy file; empty for the store
    MatchOptions match;     // what best match compares
    bool isStrict = false;  // warnings count as errors
    OutputFormat format = OutputFormat::Text;
};

// Prints the findings; kAnswerIsNo when there is an error among them. Throws a ToolError.
ExitStatus runLint(const LintOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
