// How wide the lines of a report may be.
#pragma once

#include <cstddef>
#include <optional>

namespace tool {

// The columns of a terminal; none when the descriptor is something else, or its terminal does not say.
std::optional<size_t> columnsOf(int descriptor);

// The columns of the terminal that standard output is, or what the environment variable COLUMNS says; without both
// there is no limit.
size_t terminalWidth();

}  // namespace tool
