#include "output/remarks.h"

#include <ostream>

#include "output/standard_output.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

void printRemarks(std::ostream& err, const char* kind, const std::vector<std::string>& lines, const char* more) {
    constexpr size_t kMost = 10;
    for (size_t i = 0; i < lines.size() && i < kMost; ++i)
        err << "zxpolicy: " << kind << ": " << oneLine(lines[i]) << '\n';
    if (lines.size() > kMost) err << "zxpolicy: " << kind << ": " << grouped(lines.size() - kMost) << more << '\n';
}

void requireReported(std::ostream& out, const std::string& whatWasDone, bool isDryRun) {
    if (out.flush() || isDryRun) return;
    throw ToolError(kFailed,
                    whatWasDone + ", but the report could not be written to standard output: " + standardOutputFault());
}

}  // namespace tool
