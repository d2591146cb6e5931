#include "analysis/diff_decisions_command.h"

#include <ostream>

#include "analysis/address_spelling.h"
#include "analysis/analysis_limit.h"
#include "analysis/decision_diff.h"
#include "decisions/fixed_policy.h"
#include "output/json.h"
#include "output/text.h"
#include "policy/policy_reader.h"

namespace tool {

namespace {

Json outcomeJson(const DecisionOutcome& outcome) {
    return Json::object({{"rule", outcome.rule.empty() ? Json::null() : Json(outcome.rule)},
                         {"tasks", outcome.tasks},
                         {"reason", outcome.failure.empty() ? Json::null() : Json(outcome.failure)}});
}

void printJson(std::ostream& out, const DecisionDiff& diff) {
    Json changes = Json::array();
    for (const DecisionChange& change : diff.changes) {
        Json kinds = Json::array();
        for (const MailKind& kind : change.kinds)
            kinds.add(Json::object({{"sender", kind.mail.sender},
                                    {"senderMatches", kind.senderMatches},
                                    {"receiver", kind.mail.receiver},
                                    {"receiverMatches", kind.receiverMatches},
                                    {"wellFormed", isWellFormed(kind.mail)}}));
        changes.add(Json::object({{"before", outcomeJson(change.before)},
                                  {"after", outcomeJson(change.after)},
                                  {"count", change.count},
                                  {"kinds", kinds}}));
    }
    out << Json::report({{"kinds", diff.kinds}, {"changed", diff.changed}, {"changes", changes}}).line();
}

std::string outcomeText(const DecisionOutcome& outcome) {
    if (!outcome.failure.empty()) return "a failure (" + outcome.failure + ")";
    return outcome.rule.empty() ? "no rule" : oneLine(outcome.rule);
}

std::string tasksText(const std::vector<std::string>& tasks) {
    std::string text;
    for (const std::string& task : tasks)
        text += (text.empty() ? "" : ", ") + oneLine(task);
    return text.empty() ? "none" : text;
}

// The patterns and lists that an address matches, the longest rows cut.
std::string matchesText(const std::vector<std::string>& texts) {
    constexpr size_t kShown = 6;
    std::string text;
    for (size_t i = 0; i < texts.size() && i < kShown; ++i)
        text += (i == 0 ? "" : ", ") + oneLine(texts[i]);
    if (texts.size() > kShown) text += " and " + grouped(texts.size() - kShown) + " more";
    return text.empty() ? "no condition" : text;
}

void printAddress(std::ostream& out, const char* side, const std::string& address,
                  const std::vector<std::string>& matches) {
    out << "    " << side << ' ' << inQuotes(address, 255) << (isWellFormed(address) ? "" : " (not well-formed)")
        << ", which matches " << matchesText(matches) << '\n';
}

void printChange(std::ostream& out, const DecisionChange& change) {
    out << outcomeText(change.before) << " -> " << outcomeText(change.after) << ": " << grouped(change.count)
        << (change.count == 1 ? " kind of mails\n" : " kinds of mails\n");
    if (change.before.tasks != change.after.tasks) {
        out << "  tasks before: " << tasksText(change.before.tasks) << '\n';
        out << "  tasks after: " << tasksText(change.after.tasks) << '\n';
    }
    for (const MailKind& kind : change.kinds) {
        printAddress(out, "from", kind.mail.sender, kind.senderMatches);
        printAddress(out, "to  ", kind.mail.receiver, kind.receiverMatches);
        if (&kind != &change.kinds.back()) out << '\n';
    }
    if (change.count > change.kinds.size() && !change.kinds.empty())
        out << "    and " << grouped(change.count - change.kinds.size()) << " more\n";
}

void printText(std::ostream& out, const DecisionDiff& diff) {
    for (const DecisionChange& change : diff.changes)
        printChange(out, change);
    if (diff.changed == 0)
        out << "the same rules and tasks for every mail (" << counted(diff.kinds, "kind") << " of mails compared)\n";
    else
        out << grouped(diff.changed) << " of " << counted(diff.kinds, "kind") << " of mails "
            << (diff.changed == 1 ? "is" : "are") << " decided differently\n";
}

DecisionDiff diffOf(const DiffOptions& options, const FixedPolicy& before, const FixedPolicy& after) {
    try {
        return compareDecisions(before.store(), after.store(), options.match, options.samples);
    } catch (const AnalysisLimit& limit) {
        throw PolicyError(std::string("cannot compare all mails: ") + limit.what() +
                          "; compare recorded ones by zxpolicy replay --against");
    }
}

// A list that a file names without its addresses has those of the other policy: apply would keep them.
DecisionDiff compareFiles(const DiffOptions& options, std::ostream& err) {
    Policy before = readPolicy(fileTitle(options.before), readFile(options.before));
    Policy after = readPolicy(fileTitle(options.after), readFile(options.after));
    takeAddresses(before, after);
    takeAddresses(after, before);
    return diffOf(options, FixedPolicy(options.before, before, err), FixedPolicy(options.after, after, err));
}

DecisionDiff compare(const DiffOptions& options, std::ostream& err) {
    if (isStoreLocation(options.before)) {
        const FixedPolicy before(options.before);
        if (isStoreLocation(options.after)) return diffOf(options, before, FixedPolicy(options.after));
        return diffOf(options, before, FixedPolicy(options.after, &before, err));
    }
    if (!isStoreLocation(options.after)) return compareFiles(options, err);
    const FixedPolicy after(options.after);
    return diffOf(options, FixedPolicy(options.before, &after, err), after);
}

}  // namespace

ExitStatus runDiffDecisions(const DiffOptions& options, std::ostream& out, std::ostream& err) {
    requireSeparateFiles(options);
    const DecisionDiff diff = compare(options, err);
    if (options.format == OutputFormat::Json)
        printJson(out, diff);
    else
        printText(out, diff);
    return diff.changed == 0 ? kSuccess : kAnswerIsNo;
}

}  // namespace tool
