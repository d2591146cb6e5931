// What became of policy tests.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "decisions/coverage.h"
#include "decisions/policy_test.h"

namespace tool {

struct ReceiverOutcome {
    Expectation expected;
    std::string rule;  // that takes the receiver; empty for none
    std::vector<std::string> tasks;

    bool isRuleRight() const { return rule == expected.rule; }
    bool areTasksRight() const { return !expected.tasks || tasks == *expected.tasks; }
    bool isRight() const { return isRuleRight() && areTasksRight(); }
};

struct TestOutcome {
    PolicyTest test;
    std::vector<ReceiverOutcome> receivers;  // none where the mail cannot be matched
    int failure = 0;                         // why not, or 0

    bool isPassed() const;
};

// All outcomes with what was not tested; `fileName` names the file of the tests.
struct PolicyTestReport {
    std::string fileName;
    std::vector<TestOutcome> outcomes;
    Coverage coverage;

    size_t failures() const;
    // The tests that failed, each receiver with what differs; the numbers; the coverage.
    void print(std::ostream& out) const;
    // One object: all tests, the numbers, the coverage.
    Json json() const;
};

}  // namespace tool
