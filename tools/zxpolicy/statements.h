// Lines of a report that say something about a thing: the thing on the left, what is said on the right.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "colours.h"

namespace tool {

struct Statement {
    size_t indent;
    std::string thing;
    std::string text;
    Tone tone = Tone::Plain;  // of the text
};

// The text in lines of at most `width` columns, broken at blanks; a longer word has a line of its own.
std::vector<std::string> folded(const std::string& text, size_t width);

// Prints statements whose texts are in one column, where they fit into `width` columns there; else they follow their
// thing, or go below it. The texts must be fit for a terminal.
void printStatements(std::ostream& out, const std::vector<Statement>& statements, size_t width, const Colours& colours);

}  // namespace tool
