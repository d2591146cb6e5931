// The command test.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "decisions/matcher.h"
#include "output/output_format.h"
#include "tool_error.h"

namespace tool {

struct TestOptions {
    std::string store;
    std::string file;
    std::optional<std::string> policy;  // to be tested in place of the store: a location or a policy file
    uint32_t minCoverage = 0;           // percent
    TaskLookupMaker tasks;
    OutputFormat format = OutputFormat::Text;
};

// Runs the policy tests in a file: the report goes to `out`, warnings to `err`. The answer is no when a test failed or
// too little was tested. Throws a ToolError.
ExitStatus runTest(const TestOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
