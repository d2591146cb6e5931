#include "lists/list_report.h"

#include <ostream>

#include "output/remarks.h"
#include "output/text.h"
#include "result_names.h"
#include "stored/list_store_reader.h"

namespace tool {

void printPassedOver(std::ostream& out, const std::vector<PassedOver>& addresses, uint64_t count, const char* what) {
    for (const PassedOver& entry : addresses) {
        out << "  ";
        if (entry.line != 0) out << "line " << entry.line << ": ";
        out << inQuotes(entry.address) << ' ' << what << '\n';
    }
    if (count > addresses.size()) out << "  and " << grouped(count - addresses.size()) << " more\n";
}

void requireReport(std::ostream& out, const ListOptions& options, bool isDryRun) {
    requireReported(out, listText(options.name) + " was changed in " + oneLine(options.store), isDryRun);
}

ExitStatus closeReport(std::ostream& err, const std::string& what, uint64_t leftOver, int code) {
    if (leftOver == 0) return kSuccess;
    err << "zxpolicy: " << what << ": " << describeResult(code) << '\n';
    return kAnswerIsNo;
}

}  // namespace tool
