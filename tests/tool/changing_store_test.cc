// Commands on a store that another process changes meanwhile: each answers for one policy, the one before the change or
// the one after it.
#include <gmock/gmock.h>

#include <csignal>
#include <optional>
#include <sstream>

#include "running_program.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// A policy of so many lists, classifications and rules, each of which has the name in it. All take the mails of the
// same receivers.
std::string policyNamed(const std::string& name, int rules) {
    std::string lists, classes, below;
    for (int i = 1; i <= rules; ++i) {
        const std::string number = std::to_string(i);
        lists += "  - {name: " + name + number + ", displayName: " + name + ", addresses: [\"" + name +
                 "@a.example\", \"*@" + name + number + ".example\"]}\n";
        classes += "  - {name: " + name + number + ", actions: [{name: " + name + "}]}\n";
        below += "    - name: " + name + number + "\n      conditions: [{sender: \"*\", receiver: \"*@shared" + number +
                 ".example\"}, {sender: (" + name + number + "), receiver: \"*\"}]\n      tasks: [{name: " + name +
                 ", filter: 2, outcomes: {o: " + name + number + "}}]\n";
    }
    lists += "  - {name: Both, displayName: " + name + ", addresses: [\"" + name + "@both.example\"]}\n";
    return "zxpolicy: 1\nlists:\n" + lists + "classifications:\n" + classes +
           policyWithRoot("  displayName: " + name + "\n  tasks: [{name: " + name + ", filter: 1}]\n  rules:\n" + below)
               .substr(12);
}

class ChangingStoreTest : public ToolTest {
protected:
    ChangingStoreTest() {
        write("left.yaml", policyNamed("left", 15));
        write("right.yaml", policyNamed("right", 20));
        write("mails.tsv", "x@y.example\ta@shared7.example,b@elsewhere.example\n<>\tc@shared18.example\n");
        write("tests.yaml",
              "zxpolicyTest: 1\ntests: [{name: t, sender: a@b.example, expect: [{receiver: a@shared7.example, rule: "
              "'\\left7'}]}]\n");
        applyFile("left.yaml");
    }

    void applyFile(const std::string& name) {
        const Outcome outcome = run({"apply", path(name)});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }

    std::vector<std::string> programWith(const std::vector<std::string>& arguments) const {
        std::vector<std::string> words{ZX_TOOL, "--store", location()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return words;
    }

    // What a command answers: its status and its report, without the durations in it.
    std::string answerOf(const std::vector<std::string>& arguments) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(withoutOutdated(outcome.err), "");
        return std::to_string(outcome.status) + withoutDurations(outcome.out);
    }

    static std::string withoutDurations(const std::string& report) {
        const size_t at = std::min(report.find(",\"medianNanoseconds\""), report.find("\na decision took"));
        return report.substr(0, at);
    }

    // The lines but the notes that a store has changed meanwhile.
    static std::string withoutOutdated(const std::string& err) {
        std::istringstream lines(err);
        std::string others;
        for (std::string line; std::getline(lines, line);)
            if (line.find("has changed meanwhile") == std::string::npos) others += line + '\n';
        return others;
    }

    // Feeds a program that reads mails from standard input, and has the policy changed in the middle.
    std::string fedWhileChanging(const std::vector<std::string>& arguments, int expectedStatus, std::string& err) {
        RunningProgram program(programWith(arguments), path("fed"), path("fed-err"));
        // More than a pipe holds: when all of it is written the program has begun to read.
        std::string mails;
        for (int i = 0; i < 3000; ++i)
            mails += "x@y.example\ta@shared7.example,b@elsewhere.example\n";
        program.write(mails);
        applyFile("right.yaml");
        program.write(mails);
        program.closeInput();
        EXPECT_EQ(program.wait(), expectedStatus);
        err = read(path("fed-err"));
        return read(path("fed"));
    }
};

}  // namespace

TEST_F(ChangingStoreTest, AnswersAreOfOnePolicy) {
    const std::vector<std::vector<std::string>> questions{
        {"dump"},
        {"tree"},
        {"tree", "--json"},
        {"list"},
        {"list", "--names"},
        {"list", "show", "Both", "--json"},
        {"refs", "list", "left7", "--json"},
        {"classification", "show", "--json"},
        {"rule", "show", "\\", "--json"},
        {"lint", "--json"},
        {"diff", location(), path("left.yaml"), "--json"},
        {"diff", "--decisions", location(), path("left.yaml"), "--json"},
        {"test", path("tests.yaml"), "--json"},
        {"explain", "--sender", "x@y.example", "--receiver", "a@shared7.example", "--json"},
        {"match", "--sender", "x@y.example", "--receiver", "a@shared7.example", "--json"},
        {"replay", "--envelopes", path("mails.tsv"), "--json"},
        {"replay", "--envelopes", path("mails.tsv"), "--against", path("left.yaml"), "--json"}};
    std::vector<std::string> left, right;
    for (const auto& question : questions)
        left.push_back(answerOf(question));
    applyFile("right.yaml");
    for (const auto& question : questions)
        right.push_back(answerOf(question));
    const std::string script = "trap 'exit 0' TERM; while :; do for policy in left right; do " ZX_TOOL
                               " --store \"$0\" apply \"$1/$policy.yaml\" || exit 1; done; done";
    RunningProgram other({"/bin/sh", "-c", script, location(), path(".")}, path("other"), path("other-err"));
    size_t ofLeft = 0;
    constexpr int kRounds = 4;
    for (int round = 0; round < kRounds; ++round)
        for (size_t i = 0; i < questions.size(); ++i) {
            ASSERT_NE(left[i], right[i]) << questions[i].front();
            const std::string answer = answerOf(questions[i]);
            if (answer == left[i]) ++ofLeft;
            EXPECT_TRUE(answer == left[i] || answer == right[i]) << testing::PrintToString(questions[i]) << answer;
        }
    other.signal(SIGTERM);
    EXPECT_EQ(other.wait(), 0) << read(path("other-err"));
    EXPECT_GT(ofLeft, 0U);
    EXPECT_LT(ofLeft, kRounds * questions.size());
}

TEST_F(ChangingStoreTest, ReplayKeepsToThePolicyThatItBeganWith) {
    std::string err;
    const std::string report = fedWhileChanging({"replay", "--envelopes", "-", "--json"}, 0, err);
    EXPECT_THAT(err, HasSubstr("note: " + location() + " has changed meanwhile"));
    EXPECT_THAT(report, HasSubstr("{\"rule\":\"\\\\left7\",\"receivers\":6000,\"mails\":6000"));
    EXPECT_THAT(report, testing::Not(HasSubstr("right")));
}

TEST_F(ChangingStoreTest, ReplayKeepsToBothPolicies) {
    std::string err;
    EXPECT_THAT(fedWhileChanging({"replay", "--envelopes", "-", "--against", location()}, 0, err),
                EndsWith("treated otherwise: 0 receivers of 0 mails\n"));
    EXPECT_THAT(err, HasSubstr("has changed meanwhile"));
    applyFile("left.yaml");
    const std::string report = fedWhileChanging({"replay", "--envelopes", "-", "--against", path("left.yaml")}, 0, err);
    EXPECT_THAT(report, HasSubstr("treated otherwise: 0 receivers of 0 mails\n"));
}

TEST_F(ChangingStoreTest, ReportIsOfThePolicyThatItBeganWith) {
    std::string err;
    fedWhileChanging({"report", "--envelopes", "-", "--html", path("page.html")}, 0, err);
    EXPECT_THAT(err, HasSubstr("has changed meanwhile"));
    const std::string page = read(path("page.html"));
    EXPECT_THAT(page, HasSubstr("\\\\left7"));
    EXPECT_THAT(page, testing::Not(HasSubstr("\\\\right7")));
}

// A match goes with the store, as programs that use it do: each mail is decided by one policy.
TEST_F(ChangingStoreTest, MatchDecidesEachMailByThePolicyOfItsMoment) {
    std::string err;
    const std::string report = fedWhileChanging({"match", "--envelopes", "-", "--json"}, 0, err);
    EXPECT_EQ(err, "");
    const std::string left = R"({"version":1,"sender":"x@y.example","matches":[{"rule":"\\left7")";
    EXPECT_EQ(report.substr(0, left.size()), left);
    const size_t first = report.find("right");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(report.find("left", first), std::string::npos);
}

}  // namespace tool
