// Two imports that must come to the same.
#pragma once

#include <string>

namespace fuzz {

// Imports a text with NULs, and the text without them and what stands behind them in their lines. Nothing is done with
// a text in which that is not the same: one with long lines, and one where nothing or a carriage return stands before a
// NUL.
void checkNuls(const std::string& text);

}  // namespace fuzz
