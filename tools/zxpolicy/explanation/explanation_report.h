// How explanations are shown.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "explanation/explanation.h"
#include "output/colours.h"

namespace tool {

// One JSON object on one line, in the form that docs/tool-json.md describes.
void printJson(std::ostream& out, const Explanation& explanation);

// For a person: the rules looked at for each receiver, the tasks looked at for each rule, and the answer.
// In lines of at most `width` columns.
void printText(std::ostream& out, const Explanation& explanation, const Colours& colours, size_t width);

}  // namespace tool
