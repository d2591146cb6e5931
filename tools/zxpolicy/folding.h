// Long lines on a terminal.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace tool {

// Prints a text and a line end. Where `width` is not 0, lines are broken at blanks so that they fit; all but the first
// begin with `indent` blanks. `begun` columns of the first line are printed already.
void printFolded(std::ostream& out, std::string_view text, size_t width, size_t indent, size_t begun = 0);

}  // namespace tool
