#include "analysis/lint.h"

#include "analysis/address_spelling.h"
#include "analysis/analysis_limit.h"

namespace tool {

bool isWellFormed(const SampleMail& mail) {
    return isWellFormed(mail.sender) && isWellFormed(mail.receiver);
}

const char* severityText(Severity severity) {
    switch (severity) {
        case Severity::Error:
            return "error";
        case Severity::Warning:
            return "warning";
        case Severity::Note:
            break;
    }
    return "note";
}

LintResult lintPolicy(const Store& store, const MatchOptions& options) {
    LintResult result;
    const StoredRules rules = readStoredRules(store);
    lintStoredForms(store, rules, result.findings);
    lintConditions(rules, result.findings);
    try {
        const DecisionSpace space({&rules}, options);
        lintCoverage(space, result.findings);
        result.reaches = lintReach(store, space, options, result.findings);
    } catch (const AnalysisLimit& limit) {
        result.findings.push_back({Severity::Warning,
                                   "undecided",
                                   "the rules",
                                   std::string("which mails get to them was not decided: ") + limit.what(),
                                   "make the patterns fewer or plainer",
                                   {}});
    }
    lintTasks(store, rules, result.reaches, result.findings);
    return result;
}

}  // namespace tool
