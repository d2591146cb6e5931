// Mails that a policy cannot match: outcomes for the commands that decide on many, and the others are decided.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "decisions/match_failure.h"
#include "decisions/replay_command.h"
#include "decisions/task_lookup.h"
#include "small_policy.h"
#include "tool_fixture.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::StrEq;

// Mails to x@y and a@b are matched without the list.
std::string policyThatAsks(const std::string& lists) {
    return "zxpolicy: 1\n" + lists +
           "root:\n"
           "  conditions: [{sender: \"*\", receiver: x@y}, {sender: (D), receiver: \"*\"}]\n"
           "  tasks: [{name: scan}]\n"
           "  rules: [{name: S, conditions: [{sender: \"*\", receiver: a@b}]}]\n";
}

const std::string kDirectoryList = "lists: [{name: D, type: directory, server: a}]\n";
const std::string kNormalList = "lists: [{name: D, addresses: [\"*@q\"]}]\n";

const char* const kSomeFailing =
    "q@q\ta@b\n"
    "q@c\tz@z,a@b\n"
    "q@d\tx@y\n";

const std::string kNotSupported =
    "ZXPOL_E_NOT_SUPPORTED (0x81020001): this version does not support it; remove it from the policy";
const json kNotSupportedJson{{"name", "ZXPOL_E_NOT_SUPPORTED"}, {"code", "0x81020001"}};

class FailedMailsTest : public ToolTest {
protected:
    Outcome replay(const std::string& mails, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"replay", "--envelopes", "-"});
        return run(options, mails);
    }
};

}  // namespace

TEST_F(FailedMailsTest, ReplayCountsThemAndDecidesTheOthers) {
    apply(policyThatAsks(kDirectoryList));
    const Outcome outcome = replay(kSomeFailing);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("3 mails, 4 receivers\n"
                                        "\n"
                                        "rule               receivers  mails\n"
                                        "\\                          1      1\n"
                                        "└─ S                       1      1\n"
                                        "no rule                    -      -\n"
                                        "cannot be matched          2      1\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\n1 mail cannot be matched\n  from q@c: " + kNotSupported + "\n"));
    const json report = json::parse(replay(kSomeFailing, {"--json"}).out);
    EXPECT_EQ(report["rules"][0]["receivers"], 1);
    EXPECT_EQ(report["failed"], (json{{"receivers", 2},
                                      {"mails", 1},
                                      {"first", json::array({{{"sender", "q@c"}, {"failure", kNotSupportedJson}}})}}));
}

TEST_F(FailedMailsTest, ReplaySaysNothingOfThemWithoutAny) {
    apply(policyThatAsks(kNormalList));
    const Outcome outcome = replay(kSomeFailing);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, Not(HasSubstr("cannot be matched")));
}

TEST_F(FailedMailsTest, AMissingListIsAFailureOfItsMailsAlone) {
    EXPECT_EQ(run({"apply", "--allow-dangling", write("missing.yaml", policyThatAsks(""))}).status, 0);
    const Outcome outcome = replay(kSomeFailing);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("\n1 mail cannot be matched\n  from q@c: ZXPOL_E_NOT_FOUND (0x81021804): "));
}

// Another program may have written such a condition.
TEST_F(FailedMailsTest, AListWithoutANameIsAFailureOfItsMailsAlone) {
    SmallPolicy policy(1, SmallPolicyKind::Valid);
    policy.keepOnlyRoot("(,a@b");
    ReplayOptions options;
    options.store = policy.store().location();
    options.envelopes = write("mails.tsv", kSomeFailing);
    options.tasks = lookupTasks;
    std::ostringstream out, err;
    EXPECT_EQ(runReplay(options, out, err), kAnswerIsNo);
    EXPECT_THAT(out.str(), HasSubstr("\n2 mails cannot be matched\n  from q@q: ZXPOL_E_INVALID_ARG (0x81020008): "));
}

TEST_F(FailedMailsTest, TheFirstOnesAreShown) {
    apply(policyThatAsks(kDirectoryList));
    std::string mails;
    for (int i = 1; i <= 12; ++i)
        mails += "s" + std::to_string(i) + "\x1b@c\tz@z\n";
    const std::string out = replay(mails).out;
    EXPECT_THAT(out, HasSubstr("12 mails cannot be matched\n  from s1\\x1B@c: "));
    EXPECT_THAT(out, HasSubstr("  from s10\\x1B@c: " + kNotSupported + "\n  and 2 more\n"));
}

TEST_F(FailedMailsTest, AComparisonHasThemAsAnOutcome) {
    apply(policyThatAsks(kDirectoryList));
    const std::string after = write("after.yaml", policyThatAsks(kNormalList));
    const Outcome outcome = replay(kSomeFailing, {"--against", after, "--changes", path("changes.tsv")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out,
              "3 mails, 4 receivers; treated otherwise: 2 receivers of 1 mail\n"
              "\n"
              "a failure (ZXPOL_E_NOT_SUPPORTED (0x81020001)) -> no rule\n"
              "  1 receiver of 1 mail\n"
              "  such as q@c to z@z\n"
              "\n"
              "a failure (ZXPOL_E_NOT_SUPPORTED (0x81020001)) -> \\S\n"
              "  1 receiver of 1 mail\n"
              "  + task \\scan\n"
              "  such as q@c to a@b\n"
              "\n"
              "1 mail cannot be matched before\n"
              "  from q@c: " +
                  kNotSupported + "\n");
    EXPECT_THAT(read(path("changes.tsv")),
                StrEq("2\tq@c\tz@z\ta failure (ZXPOL_E_NOT_SUPPORTED (0x81020001))\tno rule\n"
                      "2\tq@c\ta@b\ta failure (ZXPOL_E_NOT_SUPPORTED (0x81020001))\t\\S\n"));
    const json group = json::parse(replay(kSomeFailing, {"--against", after, "--json"}).out)["changes"][1];
    EXPECT_EQ(group["ruleBefore"], nullptr);
    EXPECT_EQ(group["ruleAfter"], "\\S");
    EXPECT_EQ(group["failureBefore"], kNotSupportedJson);
    EXPECT_EQ(group["failureAfter"], nullptr);
}

TEST_F(FailedMailsTest, AComparisonTakesTheSameFailureForTheSame) {
    apply(policyThatAsks(kDirectoryList));
    const Outcome outcome = replay(kSomeFailing, {"--against", location()});
    EXPECT_EQ(outcome.status, 1) << "two policies that cannot decide a mail do not agree on it";
    EXPECT_EQ(outcome.out,
              "3 mails, 4 receivers; treated otherwise: 0 receivers of 0 mails\n"
              "\n"
              "1 mail cannot be matched before\n"
              "  from q@c: " +
                  kNotSupported +
                  "\n"
                  "\n"
                  "1 mail cannot be matched after\n"
                  "  from q@c: " +
                  kNotSupported + "\n");
}

TEST_F(FailedMailsTest, AComparisonTakesFailuresOfTwoKindsForTheSame) {
    apply(policyThatAsks(kDirectoryList));
    const std::string after = write("missing.yaml", policyThatAsks(""));
    const Outcome outcome = replay(kSomeFailing, {"--against", after, "--changes", path("changes.tsv"), "--json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(read(path("changes.tsv")), "");
    const json report = json::parse(outcome.out);
    EXPECT_EQ(report["changedReceivers"], 0);
    EXPECT_EQ(report["changes"], json::array());
    const json notFound{{"name", "ZXPOL_E_NOT_FOUND"}, {"code", "0x81021804"}};
    for (const auto& [side, failure] : {std::pair{"before", kNotSupportedJson}, {"after", notFound}})
        EXPECT_EQ(
            report.at("failed").at(side),
            (json{
                {"receivers", 2}, {"mails", 1}, {"first", json::array({{{"sender", "q@c"}, {"failure", failure}}})}}));
}

TEST_F(FailedMailsTest, AComparisonOfMailsThatBothDecideCountsNone) {
    apply(policyThatAsks(kDirectoryList));
    const Outcome outcome = replay("q@d\tx@y\n", {"--against", location(), "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const char* side : {"before", "after"})
        EXPECT_EQ(json::parse(outcome.out).at("failed").at(side),
                  (json{{"receivers", 0}, {"mails", 0}, {"first", json::array()}}));
}

TEST_F(FailedMailsTest, HelpTellsThatTheyMakeTheAnswerNo) {
    for (const char* command : {"replay", "report"})
        EXPECT_THAT(run({command, "--help"}).out, HasSubstr("a mail cannot be matched"));
}

TEST_F(FailedMailsTest, AReportTellsHowManyThereAre) {
    apply(policyThatAsks(kDirectoryList));
    const Outcome outcome =
        run({"report", "--envelopes", write("mails.tsv", kSomeFailing), "--html", path("page.html")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, StartsWith(path("page.html") + ": 2 mails explained\n\n1 mail cannot be matched\n"));
    EXPECT_THAT(read(path("page.html")), HasSubstr("\"failed\":{\"receivers\":2,\"mails\":1,"));
}

TEST_F(FailedMailsTest, ATestOfOneFailsWithTheReasonAndTheOthersAreRun) {
    apply(policyThatAsks(kDirectoryList));
    const std::string tests = write("tests.yaml",
                                    "zxpolicyTest: 1\n"
                                    "tests:\n"
                                    "  - {name: asks, sender: q@c, expect: [{receiver: z@z, rule: none}]}\n"
                                    "  - {name: works, sender: q@d, expect: [{receiver: x@y, rule: \\}]}\n");
    const Outcome outcome = run({"test", tests});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, StartsWith("FAILED asks (" + tests +
                                        ":3:5)\n"
                                        "  mail from q@c, first match\n"
                                        "  cannot be matched: " +
                                        kNotSupported + "\n\nno test: "));
    EXPECT_THAT(outcome.out, HasSubstr("\n2 tests: 1 passed, 1 failed\n"));
    const json report = json::parse(run({"test", tests, "--json"}).out);
    EXPECT_EQ(report["tests"][0]["passed"], false);
    EXPECT_EQ(report["tests"][0]["failure"], kNotSupportedJson);
    EXPECT_EQ(report["tests"][0]["receivers"], json::array());
    EXPECT_EQ(report["tests"][1]["passed"], true);
    EXPECT_EQ(report["tests"][1]["failure"], nullptr);
}

TEST_F(FailedMailsTest, FailuresOfTheStoreAreNoneOfThem) {
    for (const int code : {ZXPOL_E_NOT_SUPPORTED, ZXPOL_E_NOT_FOUND, ZXPOL_E_INVALID_ARG})
        EXPECT_TRUE(isFailureOfPolicy(code)) << code;
    for (const int code : {ZXPOL_S_OK, ZXPOL_E_OUT_OF_MEMORY, ZXPOL_E_EXCEPTION, ZXREG_E_IO, ZXREG_E_CORRUPT,
                           ZXREG_E_BUSY, ZXREG_E_DELETED, ZXREG_E_PERMISSION})
        EXPECT_FALSE(isFailureOfPolicy(code)) << code;
}

TEST_F(FailedMailsTest, MatchEndsAndSaysWhichMail) {
    apply(policyThatAsks(kDirectoryList));
    const Outcome outcome = run({"match", "--envelopes", "-"}, "q@d\tx@y\nq@c\t1@z,2@z,3@z,4@z\n");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(
        outcome.err,
        HasSubstr("cannot match a mail from \"q@c\" to \"1@z\", \"2@z\", \"3@z\" and 1 more: " + kNotSupported + "\n"));
}

}  // namespace tool
