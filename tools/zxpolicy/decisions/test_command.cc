#include "decisions/test_command.h"

#include <ostream>

#include "decisions/fixed_policy.h"
#include "decisions/policy_test_reader.h"
#include "decisions/policy_test_report.h"
#include "policy/policy_reader.h"

namespace tool {

namespace {

// All receivers of a test are those of one mail.
TestOutcome outcomeOf(const PolicyTest& test, const Decision& decision) {
    TestOutcome outcome{test, {}, decision.failure};
    if (decision.failure != 0) return outcome;
    const auto rules = decision.byReceiver();
    for (const Expectation& expectation : test.expectations) {
        const auto found = rules.find(expectation.receiver);
        if (found == rules.end())
            outcome.receivers.push_back({expectation, "", {}});
        else
            outcome.receivers.push_back({expectation, found->second->path, found->second->tasks});
    }
    return outcome;
}

Envelope envelopeOf(const PolicyTest& test) {
    Envelope envelope{test.sender, {}};
    for (const Expectation& expectation : test.expectations)
        envelope.receivers.push_back(expectation.receiver);
    return envelope;
}

FixedPolicy policyOf(const TestOptions& options, std::ostream& err) {
    if (options.policy && !isStoreLocation(*options.policy)) return {*options.policy, options.store, err};
    return FixedPolicy(options.policy.value_or(options.store));
}

PolicyTestReport runTests(const TestOptions& options, const std::string& fileName, const std::vector<PolicyTest>& tests,
                          std::ostream& err) {
    const FixedPolicy policy = policyOf(options, err);
    Matcher matcher(policy.store(), {}, options.tasks(policy.store()), Matcher::Conditions::Watched);
    PolicyTestReport report{fileName, {}, Coverage(readRuleTree(matcher.rules()))};
    for (const PolicyTest& test : tests) {
        matcher.setOptions(test.match);
        const Decision decision = matcher.decideOrFail(envelopeOf(test));
        report.coverage.add(decision);
        report.outcomes.push_back(outcomeOf(test, decision));
    }
    return report;
}

}  // namespace

ExitStatus runTest(const TestOptions& options, std::ostream& out, std::ostream& err) {
    if (options.file == "-" && options.policy == "-")
        throw UsageError("the tests and --policy cannot both be read from standard input");
    const std::string fileName = fileTitle(options.file);
    const PolicyTestReport report = runTests(options, fileName, readPolicyTests(fileName, readFile(options.file)), err);
    const bool isCovered = report.coverage.percent() >= options.minCoverage;
    if (options.format == OutputFormat::Json) {
        out << report.json().line();
    } else {
        report.print(out);
        if (!isCovered) out << "that is less than the " << options.minCoverage << "% asked for\n";
    }
    return report.failures() == 0 && isCovered ? kSuccess : kAnswerIsNo;
}

}  // namespace tool
