#include "analysis/lint_report.h"

#include <algorithm>
#include <optional>
#include <ostream>

#include "output/text.h"

namespace tool {

namespace {

Json mailJson(const std::optional<SampleMail>& mail) {
    if (!mail) return Json::null();
    return Json::object({{"sender", mail->sender}, {"receiver", mail->receiver}, {"wellFormed", isWellFormed(*mail)}});
}

}  // namespace

size_t countOf(const LintResult& result, Severity severity) {
    return static_cast<size_t>(std::count_if(result.findings.begin(), result.findings.end(),
                                             [&](const Finding& finding) { return finding.severity == severity; }));
}

Json lintJson(const LintResult& result) {
    Json findings = Json::array();
    for (const Finding& finding : result.findings)
        findings.add(Json::object({{"id", finding.id},
                                   {"severity", severityText(finding.severity)},
                                   {"place", finding.place},
                                   {"text", finding.text},
                                   {"remedy", finding.remedy},
                                   {"rules", finding.rules},
                                   {"mail", mailJson(finding.mail)},
                                   {"wellFormedOnly", finding.isOfWellFormed}}));
    Json rules = Json::array();
    for (const RuleReach& reach : result.reaches)
        rules.add(
            Json::object({{"rule", reach.rule}, {"first", mailJson(reach.first)}, {"best", mailJson(reach.best)}}));
    return Json::report({{"errors", uint64_t{countOf(result, Severity::Error)}},
                         {"warnings", uint64_t{countOf(result, Severity::Warning)}},
                         {"notes", uint64_t{countOf(result, Severity::Note)}},
                         {"findings", findings},
                         {"rules", rules}});
}

void printText(std::ostream& out, const LintResult& result) {
    for (const Finding& finding : result.findings) {
        const std::string mail = !finding.mail ? ""
                                               : "; for example from " + inQuotes(finding.mail->sender, 255) + " to " +
                                                     inQuotes(finding.mail->receiver, 255);
        out << severityText(finding.severity) << ' ' << finding.id << ": " << finding.place << '\n';
        out << "    " << finding.text << mail << '\n';
        out << "    To do: " << finding.remedy << ".\n";
    }
    out << counted(countOf(result, Severity::Error), "error") << ", "
        << counted(countOf(result, Severity::Warning), "warning") << ", "
        << counted(countOf(result, Severity::Note), "note") << '\n';
}

}  // namespace tool
