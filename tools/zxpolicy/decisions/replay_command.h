// The command replay.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "decisions/matcher.h"
#include "output/output_format.h"
#include "tool_error.h"

namespace tool {

struct ReplayOptions {
    std::string store;
    std::string envelopes;
    std::optional<std::string> against;  // the other policy: a location or a policy file
    std::optional<std::string> changes;  // the file that lists each change
    uint32_t samples = 5;                // of each group of changes
    uint32_t badLines = 10;              // how many are shown
    TaskLookupMaker tasks;
    MatchOptions match;
    OutputFormat format = OutputFormat::Text;
};

// Decides on all mails by the policy as it stands when the command begins, or by two policies: the report goes to
// `out`, what else is to be said to `err`. The answer is no when a line was bad, a mail cannot be matched (by
// one of the policies), or a decision differs. Throws a ToolError.
ExitStatus runReplay(const ReplayOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
