// The failure of an analysis that would take too long.
#pragma once

#include <stdexcept>

namespace tool {

// There are more combinations than can be looked at.
class AnalysisLimit : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tool
