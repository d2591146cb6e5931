// The command explain.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "decisions/matcher.h"
#include "output/output_format.h"

namespace tool {

struct ExplainOptions {
    std::string store;
    std::string sender;
    std::vector<std::string> receivers;
    MatchOptions match;
    OutputFormat format = OutputFormat::Text;
};

// Says how the mail is decided. Throws a ToolError; for a match that fails, what it came to before that is printed.
void runExplain(const ExplainOptions& options, std::ostream& out);

}  // namespace tool
