// The command report.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "decisions/matcher.h"
#include "tool_error.h"

namespace tool {

struct ReportOptions {
    std::string store;
    std::string envelopes;  // the traffic
    std::string html;       // the page to write
    uint32_t roads = 200;   // mails that are explained on the page, at most
    TaskLookupMaker tasks;
    MatchOptions match;
};

// Writes a page on the policy, as it stands when the command begins, and the traffic. The answer is no when a line of
// the traffic was bad or a mail cannot be matched. Throws a ToolError; the page is not written then.
ExitStatus runReport(const ReportOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
