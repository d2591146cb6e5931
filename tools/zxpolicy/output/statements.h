// Lines of a report that say something about a thing: the thing on the left, what is said on the right.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "output/colours.h"

namespace tool {

struct Statement {
    size_t indent;
    std::string thing;
    std::string text;
    Tone tone = Tone::Plain;  // of the text
};

// Prints statements whose texts are in one column, where they fit into `width` columns there; else they follow their
// thing, or go below it. Wider ones are left to the output to fold. The texts must be fit for a terminal.
void printStatements(std::ostream& out, const std::vector<Statement>& statements, size_t width, const Colours& colours);

}  // namespace tool
