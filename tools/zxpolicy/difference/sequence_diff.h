// What differs between two sequences of texts.
#pragma once

#include <string>
#include <vector>

namespace tool {

struct DiffLine {
    char sign;  // ' ' in both, '-' in the first only, '+' in the second only
    std::string text;
};

// The lines of both sequences in order, as many of them in common as can be.
std::vector<DiffLine> diffOf(const std::vector<std::string>& before, const std::vector<std::string>& after);

// The lines of one sign.
std::vector<std::string> linesOf(const std::vector<DiffLine>& diff, char sign);

}  // namespace tool
