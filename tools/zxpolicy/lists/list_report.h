// What a change of a list came to.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "lists/list_commands.h"
#include "zxpolicy.h"

namespace tool {

// An address that was passed over, and the number of its line, 0 for one that is in no file.
struct PassedOver {
    uint64_t line;
    std::string address;
};

// Prints up to 10 addresses, one a line, with what they are, such as "is invalid"; `count` is the number of all.
void printPassedOver(std::ostream& out, const std::vector<PassedOver>& addresses, uint64_t count, const char* what);

// Makes sure that the report was written, after a change that was kept.
void requireReport(std::ostream& out, const ListOptions& options, bool isDryRun);

// The end of a report: the status, and a line to `err` when some addresses are left over, for the reason `code`.
ExitStatus closeReport(std::ostream& err, const std::string& what, uint64_t leftOver, int code);

}  // namespace tool
