#include "analysis/lint.h"

#include <iterator>
#include <utility>

namespace tool {

LintResult lintPolicy(const Store& store, const MatchOptions& options) {
    LintResult result;
    const StoredRules rules = readStoredRules(store);
    lintStoredForms(store, rules, result.findings);
    std::vector<Finding> ofMails;
    try {
        const DecisionSpace space({&rules}, options);
        lintCoverage(space, ofMails);
        result.reaches = lintReach(store, space, options, ofMails);
    } catch (const AnalysisLimit& limit) {
        ofMails.push_back(undecidedRules(rules, limit));
    }
    lintConditions(rules, result.reaches, result.findings);
    std::move(ofMails.begin(), ofMails.end(), std::back_inserter(result.findings));
    lintTasks(store, rules, result.reaches, result.findings);
    return result;
}

}  // namespace tool
