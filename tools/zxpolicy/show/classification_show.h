// The command that shows classifications and their actions. An action is named CLASSIFICATION\ACTION.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "output/output_format.h"

namespace tool {

struct ClassificationShowOptions {
    std::string store;
    std::optional<std::string> name;  // absent: all of them
    OutputFormat format = OutputFormat::Text;
};

// All classifications, one with its actions, or one action. The report goes to `out`. Throws a ToolError.
void runClassificationShow(const ClassificationShowOptions& options, std::ostream& out);

}  // namespace tool
