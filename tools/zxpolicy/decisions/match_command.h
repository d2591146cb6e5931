// The command match.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "decisions/matcher.h"
#include "output/output_format.h"

namespace tool {

struct MatchCommandOptions {
    std::string store;
    std::string sender;  // with receivers: one mail
    std::vector<std::string> receivers;
    std::optional<std::string> envelopes;  // else a file of mails
    TaskLookupMaker tasks;
    MatchOptions match;
    OutputFormat format = OutputFormat::Text;
};

// Decides on the mail or the mails. Throws a ToolError.
void runMatch(const MatchCommandOptions& options, std::ostream& out);

}  // namespace tool
