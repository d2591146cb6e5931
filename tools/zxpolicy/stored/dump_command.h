// The command dump.
#pragma once

#include <iosfwd>
#include <string>

namespace tool {

struct DumpOptions {
    std::string store;
    bool withSecrets = false;
};

// Prints the store's policy as a policy file. Throws a ToolError, without having printed anything, when the store
// cannot be read or holds what no policy file can say.
void runDump(const DumpOptions& options, std::ostream& out);

}  // namespace tool
