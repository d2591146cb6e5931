// How wide the lines of a report may be.
#pragma once

#include <cstddef>

namespace tool {

// The columns of the terminal that standard output is, or what the environment variable COLUMNS says; without both
// there is no limit.
size_t terminalWidth();

}  // namespace tool
