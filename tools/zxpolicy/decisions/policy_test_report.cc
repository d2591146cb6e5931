#include "decisions/policy_test_report.h"

#include <algorithm>
#include <ostream>

#include "decisions/match_failure.h"
#include "decisions/match_words.h"
#include "difference/sequence_diff.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "result_names.h"

namespace tool {

namespace {

std::string optionsText(const MatchOptions& options) {
    if (!options.isBest) return "first match";
    return "best match, priority " + wordFor(kPriorities, options.priority) + ", weight " +
           wordFor(kWeights, options.weight);
}

std::string expectedRuleText(const std::string& path) {
    return path.empty() ? "none" : oneLine(path);
}

Json expectedRuleJson(const std::string& path) {
    return path.empty() ? Json::null() : Json(path);
}

void printOutcome(std::ostream& out, const ReceiverOutcome& outcome, const Coverage& policy) {
    out << "  to " << oneLine(outcome.expected.receiver) << '\n';
    if (!outcome.isRuleRight()) {
        const bool isKnown = outcome.expected.rule.empty() || policy.hasRule(outcome.expected.rule);
        out << "    rule   - " << expectedRuleText(outcome.expected.rule)
            << (isKnown ? "" : "  (the policy has no such rule)") << '\n';
        out << "           + " << expectedRuleText(outcome.rule) << '\n';
    }
    if (outcome.areTasksRight()) return;
    const char* heading = "    tasks  ";
    for (const DiffLine& line : diffOf(*outcome.expected.tasks, outcome.tasks)) {
        out << heading << line.sign << ' ' << oneLine(line.text) << '\n';
        heading = "           ";
    }
}

void printFailure(std::ostream& out, const std::string& fileName, const TestOutcome& outcome, const Coverage& policy) {
    out << "FAILED " << oneLine(outcome.test.name) << " (" << YamlSource(fileName).at(outcome.test.place) << ")\n";
    out << "  mail from " << senderToText(outcome.test.sender) << ", " << optionsText(outcome.test.match) << '\n';
    if (outcome.failure != 0) out << "  cannot be matched: " << describeResult(outcome.failure) << '\n';
    for (const ReceiverOutcome& receiver : outcome.receivers)
        if (!receiver.isRight()) printOutcome(out, receiver, policy);
    out << '\n';
}

Json receiverJson(const ReceiverOutcome& outcome) {
    const Json tasks = outcome.expected.tasks ? Json(*outcome.expected.tasks) : Json::null();
    const Json expected = Json::object({{"rule", expectedRuleJson(outcome.expected.rule)}, {"tasks", tasks}});
    return Json::object(
        {{"receiver", outcome.expected.receiver},
         {"passed", outcome.isRight()},
         {"expected", expected},
         {"actual", Json::object({{"rule", expectedRuleJson(outcome.rule)}, {"tasks", outcome.tasks}})}});
}

Json testJson(const TestOutcome& outcome) {
    Json receivers = Json::array();
    for (const ReceiverOutcome& receiver : outcome.receivers)
        receivers.add(receiverJson(receiver));
    const MatchOptions& options = outcome.test.match;
    return Json::object({{"name", outcome.test.name},
                         {"line", static_cast<uint32_t>(outcome.test.place.line)},
                         {"passed", outcome.isPassed()},
                         {"sender", outcome.test.sender},
                         {"mode", options.isBest ? "best" : "first"},
                         {"priority", options.isBest ? Json(wordFor(kPriorities, options.priority)) : Json::null()},
                         {"weight", options.isBest ? Json(wordFor(kWeights, options.weight)) : Json::null()},
                         {"receivers", receivers},
                         {"failure", failureJson(outcome.failure)}});
}

}  // namespace

bool TestOutcome::isPassed() const {
    return failure == 0 && std::all_of(receivers.begin(), receivers.end(),
                                       [](const ReceiverOutcome& receiver) { return receiver.isRight(); });
}

size_t PolicyTestReport::failures() const {
    return static_cast<size_t>(std::count_if(outcomes.begin(), outcomes.end(),
                                             [](const TestOutcome& outcome) { return !outcome.isPassed(); }));
}

void PolicyTestReport::print(std::ostream& out) const {
    for (const TestOutcome& outcome : outcomes)
        if (!outcome.isPassed()) printFailure(out, fileName, outcome, coverage);
    const bool hasDifferences = std::any_of(outcomes.begin(), outcomes.end(), [](const TestOutcome& outcome) {
        return outcome.failure == 0 && !outcome.isPassed();
    });
    if (hasDifferences) out << "- is expected, + is what the policy does\n\n";
    coverage.printMissing(out);
    out << counted(outcomes.size(), "test") << ": " << grouped(outcomes.size() - failures()) << " passed, "
        << grouped(failures()) << " failed\n";
    coverage.printShares(out);
}

Json PolicyTestReport::json() const {
    Json tests = Json::array();
    for (const TestOutcome& outcome : outcomes)
        tests.add(testJson(outcome));
    return Json::report({{"tests", tests},
                         {"passed", uint64_t{outcomes.size() - failures()}},
                         {"failed", uint64_t{failures()}},
                         {"coverage", coverage.json()}});
}

}  // namespace tool
