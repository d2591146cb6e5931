#include "decisions/replay_command.h"

#include <optional>
#include <ostream>

#include "decisions/decision_changes.h"
#include "decisions/fixed_policy.h"
#include "decisions/match_summary.h"
#include "decisions/traffic.h"
#include "output/output_file.h"
#include "output/progress.h"

namespace tool {

namespace {

// A report of what was counted, with what the traffic held besides.
template <class Counted>
void printReplay(const ReplayOptions& options, std::ostream& out, const Traffic& traffic, Json json,
                 const Counted& printText) {
    if (options.format == OutputFormat::Json) {
        out << json.add("badLines", traffic.badLinesJson()).line();
        return;
    }
    printText();
    traffic.printBadLines(out);
}

ExitStatus addDecisionsUp(const ReplayOptions& options, const FixedPolicy& policy, Traffic& traffic,
                          std::ostream& out) {
    Matcher matcher(policy.store(), options.match, options.tasks(policy.store()), Matcher::Conditions::Watched);
    MatchSummary summary(MatchSummary::Conditions::Counted);
    Progress progress("mails", traffic.size());
    Envelope envelope;
    while (traffic.next(envelope)) {
        summary.add(envelope, matcher.decideOrFail(envelope));
        progress.step(traffic.bytes());
    }
    progress.clear();
    const RuleNode root = readRuleTree(matcher.rules());
    printReplay(options, out, traffic, summary.json(root), [&] {
        summary.print(out, root);
        summary.failed().print(out);
    });
    return summary.failed().mails() == 0 ? kSuccess : kAnswerIsNo;
}

// The files that the command reads.
std::vector<std::string> filesRead(const ReplayOptions& options) {
    std::vector<std::string> files = filesOf(options.store);
    const std::vector<std::string> others = filesOf(*options.against);
    files.insert(files.end(), others.begin(), others.end());
    files.push_back(options.envelopes);
    return files;
}

ExitStatus compareDecisions(const ReplayOptions& options, const FixedPolicy& policy, const FixedPolicy& other,
                            Traffic& traffic, std::ostream& out) {
    Matcher before(policy.store(), options.match, options.tasks(policy.store()));
    Matcher after(other.store(), options.match, options.tasks(other.store()));
    std::optional<OutputFile> listing;
    if (options.changes) listing.emplace(*options.changes, filesRead(options));
    DecisionChanges changes(options.samples, listing ? &listing->stream() : nullptr);
    Progress progress("mails", traffic.size());
    Envelope envelope;
    while (traffic.next(envelope)) {
        changes.add(traffic.line(), envelope, before.decideOrFail(envelope), after.decideOrFail(envelope));
        progress.step(traffic.bytes());
    }
    progress.clear();
    if (listing) listing->keep();
    printReplay(options, out, traffic, changes.json(), [&] { changes.print(out); });
    return changes.isEmpty() && !changes.hasFailed() ? kSuccess : kAnswerIsNo;
}

// Standard input is read once.
void requireSeparateFiles(const ReplayOptions& options) {
    if (options.envelopes == "-" && options.against == "-")
        throw UsageError("--envelopes and --against cannot both read standard input");
}

}  // namespace

ExitStatus runReplay(const ReplayOptions& options, std::ostream& out, std::ostream& err) {
    requireSeparateFiles(options);
    const FixedPolicy policy(options.store);
    std::optional<FixedPolicy> other;
    if (options.against && isStoreLocation(*options.against))
        other.emplace(*options.against);
    else if (options.against)
        other.emplace(*options.against, &policy, err);
    Traffic traffic(options.envelopes, options.badLines);
    const ExitStatus status =
        other ? compareDecisions(options, policy, *other, traffic, out) : addDecisionsUp(options, policy, traffic, out);
    policy.noteIfOutdated(err);
    if (other) other->noteIfOutdated(err);
    return traffic.badLines() == 0 ? status : kAnswerIsNo;
}

}  // namespace tool
