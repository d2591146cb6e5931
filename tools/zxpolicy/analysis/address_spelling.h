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

// Whether it is what mail programs call an address, its kind left out, or the null sender. Characters that are not
// ASCII count as letters, as in internationalised addresses.
bool isWellFormed(const std::string& address);

// The text as it must be written so that nothing of it is taken for the kind of the address.
std::string withKind(std::string text);

/*
 * Addresses with this local part and domain, without an "@" and with one, the plainest first; none when no text has
 * these parts. Each is a well-formed one where there is one. Quotes can stand around each word of a local part; where
 * that leaves too many ways to try, and none of the usual ones is right, an AnalysisLimit is thrown.
 */
std::vector<std::string> spellings(const std::string& name, const std::string& domain);

// Addresses with this sort key: one at least for each local part and domain that such an address has. Throws an
// AnalysisLimit.
std::vector<std::string> addressesOfKey(const std::string& key);

// Whether some address has this local part. Throws an AnalysisLimit.
bool isLocalPart(const std::string& name);

}  // namespace tool
