#include "decisions/match_command.h"

#include <unistd.h>

#include <algorithm>
#include <ostream>

#include "decisions/match_report.h"
#include "decisions/match_summary.h"
#include "output/progress.h"
#include "policy/address_text.h"
#include "stored/snapshot.h"
#include "tool_error.h"

namespace tool {

namespace {

void matchOne(const MatchCommandOptions& options, Matcher& matcher, std::ostream& out) {
    const Envelope envelope{senderFromText(options.sender), options.receivers};
    const bool hasEmpty = std::any_of(envelope.receivers.begin(), envelope.receivers.end(),
                                      [](const std::string& receiver) { return receiver.empty(); });
    if (hasEmpty) throw UsageError("a receiver is empty");
    const Decision decision = matcher.decide(envelope);
    if (options.format == OutputFormat::Json)
        printJson(out, envelope, decision);
    else
        printText(out, envelope, decision);
}

// The answers are worth nothing where some are missing.
bool readMail(EnvelopeReader& reader, Envelope& envelope) {
    try {
        return reader.next(envelope);
    } catch (const BadLine& bad) {
        throw UsageError(std::string(bad.what()) + "; match ends at the first bad line, correct it (replay goes on)");
    }
}

void matchMany(const MatchCommandOptions& options, const Store& store, EnvelopeReader& reader, Matcher& matcher,
               std::ostream& out) {
    // Lines that go to the terminal show how far it is, and a count among them would garble them.
    const bool isStreamed = options.format == OutputFormat::Json && isatty(STDOUT_FILENO) != 0;
    Progress progress("mails", reader.size(), !isStreamed);
    MatchSummary summary;
    Envelope envelope;
    while (readMail(reader, envelope)) {
        const Decision decision = matcher.decide(envelope);
        if (options.format == OutputFormat::Json)
            printJson(out, envelope, decision);
        else
            summary.add(envelope, decision);
        progress.step(reader.bytes());
    }
    progress.clear();
    if (options.format == OutputFormat::Json) return;
    summary.print(out, readAtOneMoment(store, [&] { return readRuleTree(matcher.rules()); }));
}

}  // namespace

void runMatch(const MatchCommandOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    store.requirePolicy();
    if (!options.envelopes) {
        Matcher matcher(store, options.match, options.tasks(store));
        matchOne(options, matcher, out);
        return;
    }
    EnvelopeReader reader(*options.envelopes);
    Matcher matcher(store, options.match, options.tasks(store));
    matchMany(options, store, reader, matcher, out);
}

}  // namespace tool
