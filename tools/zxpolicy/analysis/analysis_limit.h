// The failure of an analysis that would take too long.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace tool {

// There are more combinations than can be looked at.
class AnalysisLimit : public std::runtime_error {
public:
    // `localPart`: the one of a pattern or an address that is at fault, where it is known.
    explicit AnalysisLimit(const std::string& what, std::string localPart = "")
        : std::runtime_error(what), _localPart(std::move(localPart)) {}

    const std::string& localPart() const { return _localPart; }

private:
    std::string _localPart;
};

}  // namespace tool
