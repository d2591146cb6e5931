// The command refs.
#pragma once

#include <iosfwd>
#include <string>

#include "output/output_format.h"
#include "tool_error.h"
#include "zxpolicy.h"

namespace tool {

struct RefsOptions {
    std::string store;
    ZxPolRefEntity entity = ZXPOL_REF_ADDRLIST;
    std::string name;
    OutputFormat format = OutputFormat::Text;
};

// Prints the rules that refer to an address list or a classification, which need not exist; kAnswerIsNo when there are
// none. Throws a ToolError.
ExitStatus runRefs(const RefsOptions& options, std::ostream& out);

}  // namespace tool
