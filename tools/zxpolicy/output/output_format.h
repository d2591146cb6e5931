// How a command reports.
#pragma once

namespace tool {

enum class OutputFormat { Text, Json };

}  // namespace tool
