// diff --decisions: what is printed of two policies compared on all mails.
#include "analysis/diff_decisions_command.h"

#include <gmock/gmock.h>

#include <sstream>

#include "analysis/decision_diff.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;

class DiffDecisionsTest : public ToolTest {
protected:
    Outcome diff(const std::string& before, const std::string& after, DiffOptions options = {}) {
        options.before = write("before.yaml", before);
        options.after = write("after.yaml", after);
        std::ostringstream out, err;
        const ExitStatus status = runDiffDecisions(options, out, err);
        return {status, out.str(), err.str()};
    }
};

// A policy with a rule A that takes some receivers, and a task.
std::string policyFor(const std::string& receiver, const std::string& task = "scan") {
    return policyWithRoot("  tasks: [{name: " + task +
                          "}]\n  rules: [{name: A, conditions: [{sender: \"*\", receiver: \"" + receiver + "\"}]}]\n");
}

}  // namespace

TEST_F(DiffDecisionsTest, SaysThatPoliciesWrittenDifferentlyDecideTheSame) {
    const std::string listed = "zxpolicy: 1\nlists: [{name: L, addresses: [\"*@a.example\"]}]\n" +
                               policyWithRoot(
                                   "  tasks: [{name: scan}]\n  rules:\n    - {name: A, conditions: [{sender: "
                                   "\"*\", receiver: (L)}]}\n")
                                   .substr(12);
    const Outcome outcome = diff(policyFor("*@A.example"), listed);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "the same rules and tasks for every mail (2 kinds of mails compared)\n");
    EXPECT_EQ(outcome.err, "");
}

// A list finds an address whose quotes go around the "@" as well, and a pattern does not.
TEST_F(DiffDecisionsTest, SaysWhichAddressesAreNotWellFormed) {
    const std::string listed = "zxpolicy: 1\nlists: [{name: L, addresses: [\"x@a.example\"]}]\n" +
                               policyWithRoot(
                                   "  tasks: [{name: scan}]\n  rules:\n    - {name: A, conditions: [{sender: "
                                   "\"*\", receiver: (L)}]}\n")
                                   .substr(12);
    const Outcome outcome = diff(policyFor("x@a.example"), listed);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("    to   \"\\\"x@a.example\\\"\" (not well-formed), which matches *, (L)\n"));
    DiffOptions options;
    options.format = OutputFormat::Json;
    EXPECT_THAT(diff(policyFor("x@a.example"), listed, options).out, HasSubstr("\"wellFormed\":false}"));
}

TEST_F(DiffDecisionsTest, TellsTheMailsThatAreDecidedDifferently) {
    const Outcome outcome = diff(policyFor("*@a.example"), policyFor("x@a.example"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out,
              "\\A -> \\: 1 kind of mails\n"
              "    from \"anyone@anywhere.example\", which matches *\n"
              "    to   \"anyone@a.example\", which matches *, *@a.example\n"
              "1 of 3 kinds of mails is decided differently\n");
}

TEST_F(DiffDecisionsTest, TellsTasksThatDiffer) {
    const Outcome outcome = diff(policyFor("*@a.example", "scan"), policyFor("*@a.example", "check"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out,
                HasSubstr("\\A -> \\A: 1 kind of mails\n  tasks before: \\scan\n  tasks after: \\check\n"));
    EXPECT_THAT(outcome.out, HasSubstr("2 of 2 kinds of mails are decided differently\n"));
}

TEST_F(DiffDecisionsTest, TellsTheNumberAloneWithoutSamples) {
    DiffOptions options;
    options.samples = 0;
    EXPECT_EQ(diff(policyFor("*@a.example"), policyFor("x@a.example"), options).out,
              "\\A -> \\: 1 kind of mails\n1 of 3 kinds of mails is decided differently\n");
}

// What a task is set to do is for the other comparison.
TEST_F(DiffDecisionsTest, ComparesTasksByTheirNames) {
    const std::string one = policyWithRoot("  tasks: [{name: scan, setting: {a: 1}, outcomes: {o: x}}]\n");
    const std::string other = policyWithRoot("  tasks: [{name: scan, setting: {a: 2}, outcomes: {o: y}}]\n");
    EXPECT_EQ(diff(one, other).out, "the same rules and tasks for every mail (1 kind of mails compared)\n");
    EXPECT_EQ(run({"diff", path("before.yaml"), path("after.yaml")}).status, 1);
}

TEST_F(DiffDecisionsTest, TakesFailuresForTheSameWhateverTheirReasons) {
    const DecisionOutcome failure{"\\A", {}, "one"};
    EXPECT_EQ(failure, (DecisionOutcome{"\\", {}, "another"}));
    EXPECT_NE(failure, (DecisionOutcome{"\\A", {}, ""}));
    EXPECT_NE((DecisionOutcome{"\\A", {}, ""}), failure);
    EXPECT_NE((DecisionOutcome{"\\A", {"\\t"}, ""}), (DecisionOutcome{"\\A", {}, ""}));
}

TEST_F(DiffDecisionsTest, StandardInputIsReadOnce) {
    const std::string policy = policyFor("*@a.example");
    for (const std::vector<std::string>& command : {std::vector<std::string>{"diff"}, {"diff", "--decisions"}}) {
        const auto compared = [&](const std::vector<std::string>& policies) {
            std::vector<std::string> arguments = command;
            arguments.insert(arguments.end(), policies.begin(), policies.end());
            return run(arguments, policy);
        };
        const Outcome outcome = compared({"-", "-"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.err, "zxpolicy: the two policies cannot both be read from standard input\n");
        EXPECT_EQ(compared({"-", write("after.yaml", policy)}).status, 0);
    }
}

TEST_F(DiffDecisionsTest, DependsOnTheWayOfMatching) {
    const std::string one = policyWithRoot(
        "  rules: [{name: A, conditions: [{sender: \"*\", receiver: \"*@a.example\"}]}, {name: B, conditions: "
        "[{sender: "
        "\"*\", receiver: x@a.example}]}]\n");
    const std::string other = policyWithRoot(
        "  rules: [{name: B, conditions: [{sender: \"*\", receiver: x@a.example}]}, {name: A, conditions: [{sender: "
        "\"*\", receiver: \"*@a.example\"}]}]\n");
    EXPECT_EQ(diff(one, other).status, 1);
    DiffOptions options;
    options.match.isBest = true;
    EXPECT_EQ(diff(one, other, options).status, 0);
}

TEST_F(DiffDecisionsTest, ReportsAsJson) {
    DiffOptions options;
    options.format = OutputFormat::Json;
    EXPECT_EQ(diff(policyFor("*@a.example"), policyFor("x@a.example"), options).out,
              "{\"version\":1,\"kinds\":3,\"changed\":1,\"changes\":[{\"before\":{\"rule\":\"\\\\A\",\"tasks\":["
              "\"\\\\scan\"],"
              "\"reason\":null},\"after\":{\"rule\":\"\\\\\",\"tasks\":[\"\\\\scan\"],\"reason\":null},\"count\":1,"
              "\"kinds\":[{\"sender\":\"anyone@anywhere.example\",\"senderMatches\":[\"*\"],\"receiver\":\"anyone@a."
              "example\","
              "\"receiverMatches\":[\"*\",\"*@a.example\"],\"wellFormed\":true}]}]}\n");
}

}  // namespace tool
