#include "analysis/lint_command.h"

#include <algorithm>
#include <ostream>

#include "analysis/lint_report.h"
#include "decisions/fixed_policy.h"

namespace tool {

ExitStatus runLint(const LintOptions& options, std::ostream& out, std::ostream& err) {
    const std::string& policy = options.policy.empty() ? options.store : options.policy;
    const FixedPolicy fixed = isStoreLocation(policy) ? FixedPolicy(policy) : FixedPolicy(policy, options.store, err);
    LintResult result = lintPolicy(fixed.store(), options.match);
    std::stable_sort(result.findings.begin(), result.findings.end(),
                     [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
    if (options.format == OutputFormat::Json)
        out << lintJson(result).line();
    else
        printText(out, result);
    const bool isBad =
        countOf(result, Severity::Error) != 0 || (options.isStrict && countOf(result, Severity::Warning) != 0);
    return isBad ? kAnswerIsNo : kSuccess;
}

}  // namespace tool
