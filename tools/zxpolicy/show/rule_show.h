// The commands that show rules and tasks.
#pragma once

#include <iosfwd>
#include <string>

#include "output/output_format.h"

namespace tool {

struct RuleShowOptions {
    std::string store;
    std::string path = "\\";
    OutputFormat format = OutputFormat::Text;
};

// A rule with all below it; one rule; one task. Each prints its report to `out`, and throws a ToolError.
void runTree(const RuleShowOptions& options, std::ostream& out);
void runRuleShow(const RuleShowOptions& options, std::ostream& out);
void runTaskShow(const RuleShowOptions& options, std::ostream& out);

}  // namespace tool
