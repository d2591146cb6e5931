// From the parts of an address to its text, and back.
#pragma once

#include <string>
#include <vector>

namespace tool {

// What decides on an address.
struct AddressParts {
    std::string name;     // its local part, without quotes
    std::string domain;   // empty also when there is no "@"
    std::string sortKey;  // by which lists find it, in lower case
};

// The parts of an address as the library takes it apart, the text up to its first ":" left out.
AddressParts partsOf(const std::string& address);

// Addresses with this local part and domain, the plainest first; none when no text has them.
std::vector<std::string> spellings(const std::string& name, const std::string& domain);

}  // namespace tool
