// What a command that changes a policy says besides its report.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tool {

// Prints the first lines as "zxpolicy: KIND: LINE", and how many there are `more`, such as " more conditions".
void printRemarks(std::ostream& err, const char* kind, const std::vector<std::string>& lines, const char* more);

// Makes sure that the report was written, after a change that was kept: `whatWasDone` says that it was. Throws a
// ToolError.
void requireReported(std::ostream& out, const std::string& whatWasDone, bool isDryRun);

}  // namespace tool
