// Lines of a report that say one fact each: a label, what it is about, and what is said about that.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace tool {

struct Fact {
    std::string label;  // such as "task"
    std::string what;
    std::string more;  // may be empty
};

// Prints the facts as a block of aligned columns, each line behind `lead`. Where a line is wider than `width` columns,
// what it says more goes to the next line. The texts are made fit for a terminal here.
void printFacts(std::ostream& out, const std::string& lead, const std::vector<Fact>& facts, size_t width);

}  // namespace tool
