#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>

#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

using CommandLineTest = ToolTest;

}  // namespace

TEST_F(CommandLineTest, HelpAndVersionSucceed) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"apply", "--help"},
                                                      {"dump", "--help"},
                                                      {"match", "--help"},
                                                      {"refs", "--help"},
                                                      {"refs", "classification", "--help"},
                                                      {"list", "--help"},
                                                      {"test", "--help"},
                                                      {"replay", "--help"},
                                                      {"explain", "--help"},
                                                      {"lint", "--help"},
                                                      {"report", "--help"},
                                                      {"list", "import", "--help"},
                                                      {"tree", "--help"},
                                                      {"rule", "--help"},
                                                      {"rule", "add", "--help"},
                                                      {"task", "set", "--help"},
                                                      {"classification", "--help"},
                                                      {"diff", "--help"}}) {
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, HasSubstr("--help"));
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_EQ(runPlain({"--version"}).out, "zxpolicy 1.2.0, libzxpolicy 1.2.0.1229\n");
}

TEST_F(CommandLineTest, WrongUsageExitsWith2AndSaysItInOneLine) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{},
          {"frobnicate"},
          {"--frobnicate", "dump"},
          {"dump", "--frobnicate"},
          {"dump", "extra"},
          {"apply"},
          {"apply", "a", "b"},
          {"apply", "--format", "xml", "-"},
          {"match"},
          {"match", "--sender", "a@b"},
          {"match", "--receiver", "a@b"},
          {"match", "--sender", "a@b", "--receiver"},
          {"match", "--sender", "a@b", "--receiver", "c@d", "--envelopes", "x"},
          {"match", "--best", "--priority", "both", "--envelopes", "x"},
          {"match", "--priority", "total", "--envelopes", "x"},
          {"match", "--weight", "name", "--envelopes", "x"},
          {"apply", "--format", "json", "--json", "-"},
          {"refs"},
          {"refs", "list"},
          {"refs", "rule", "A"},
          {"refs", "list", "A", "B"},
          {"refs", "classification", "A", "--json", "--format", "text"},
          {"list", "--names", "--json"},
          {"list", "frobnicate"},
          {"list", "show", "A", "B"},
          {"list", "show", "A", "--order", "decending"},
          {"list", "check", "A"},
          {"list", "add", "A"},
          {"list", "remove"},
          {"list", "import", "A"},
          {"list", "import", "A", "-", "--format", "json"},
          {"list", "export"},
          {"test"},
          {"test", "a", "b"},
          {"test", "a", "--min-coverage", "101"},
          {"test", "a", "--min-coverage", "all"},
          {"replay"},
          {"replay", "--envelopes", "a", "--bad-lines", "-1"},
          {"replay", "--envelopes", "a", "--changes", "b"},
          {"replay", "--envelopes", "a", "--samples", "1"},
          {"replay", "--envelopes", "a", "--weight", "name"},
          {"tree", "\\A", "\\B"},
          {"rule"},
          {"rule", "show"},
          {"rule", "add"},
          {"rule", "add", "\\A", "--add-condition", "*,*"},
          {"rule", "set", "\\A", "--condition", "*,*"},
          {"rule", "move", "\\A"},
          {"rule", "move", "\\A", "--position", "1", "--recursive"},
          {"task", "set", "\\t", "--position", "1"},
          {"task", "add", "\\t", "--remove-setting", "a"},
          {"classification", "list"},
          {"classification", "move", "A\\b"},
          {"diff", "a"},
          {"diff", "a", "b", "c"}}) {
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith("zxpolicy: "));
        EXPECT_THAT(outcome.err, HasSubstr("(try --help)"));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST_F(CommandLineTest, FilesThatCannotBeReadExitWith2) {
    apply(policyWithRoot(""));
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"apply", path("none")},
                                                      {"apply", path("")},
                                                      {"match", "--envelopes", ""},
                                                      {"match", "--envelopes", path("none")},
                                                      {"replay", "--envelopes", path("none")}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, testing::ContainsRegex("zxpolicy: cannot (open|read) "));
    }
}

TEST_F(CommandLineTest, AStoreThatIsNotThereIsNoEmptyPolicy) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"dump"},
                                                      {"match", "--sender", "a@b", "--receiver", "c@d"},
                                                      {"refs", "list", "A"},
                                                      {"refs", "classification", "A"},
                                                      {"replay", "--envelopes", "-"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("there is no store at " + location()));
        EXPECT_NE(access(path("policy.db").c_str(), F_OK), 0) << "the store was made";
    }
    // A path that is not there cannot be made either.
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"dump"}, {"apply", "--dry-run", "-"}}) {
        std::vector<std::string> pathless = {"--store", "sqlite:"};
        pathless.insert(pathless.end(), arguments.begin(), arguments.end());
        const Outcome outcome = runPlain(pathless, {}, policyWithRoot(""));
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("cannot open the store sqlite:: "));
        EXPECT_THAT(outcome.err, HasSubstr("ZXREG_E_LOCATION (0x81021908)"));
    }
    const Outcome memory = runPlain({"--store", "memory:", "dump"});
    EXPECT_EQ(memory.status, 3);
    EXPECT_THAT(memory.err, HasSubstr("holds no policy"));
}

TEST_F(CommandLineTest, StoresThatCannotBeUsedExitWith3ByNameAndNumber) {
    const std::string file = write("text", std::string(5000, 'x'));
    for (const auto& [location, result] :
         {std::pair{"bogus:x", "ZXREG_E_LOCATION (0x81021908)"}, {file.c_str(), "ZXREG_E_LOCATION (0x81021908)"}}) {
        const Outcome outcome = runPlain({"--store", location, "dump"});
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr(result));
        EXPECT_THAT(outcome.err, HasSubstr("use memory:, memory:NAME or sqlite:PATH: correct --store or "));
    }
    EXPECT_THAT(runPlain({"--store", "sqlite:" + file, "dump"}).err, HasSubstr("ZXREG_E_FOREIGN (0x81021903)"));
}

TEST_F(CommandLineTest, TheStoreComesFromTheOptionThenFromTheEnvironment) {
    const std::string own = "sqlite:" + path("own.db");
    const std::string other = "sqlite:" + path("other.db");
    EXPECT_EQ(runPlain({"apply", "-"}, {"ZXPOLICY_STORE=" + own}, policyWithRoot("  comment: own\n")).status, 0);
    EXPECT_EQ(runPlain({"--store", other, "apply", "-"}, {"ZXPOLICY_STORE=" + own}, policyWithRoot("")).status, 0);
    EXPECT_THAT(runPlain({"dump"}, {"ZXPOLICY_STORE=" + own}).out, HasSubstr("comment: own"));
    EXPECT_THAT(runPlain({"dump", "--store", other}, {"ZXPOLICY_STORE=" + own}).out, Not(HasSubstr("comment")));
}

TEST_F(CommandLineTest, NumbersAreDecimalAlsoWithZerosInFront) {
    std::string rules = "  rules:\n";
    for (const char name : std::string("ABCDEFGHIJKL"))
        rules += std::string("    - {name: ") + name + ", conditions: [{sender: '*', receiver: '*'}]}\n";
    apply(policyWithRoot(rules));
    EXPECT_EQ(run({"rule", "move", "\\A", "--position", "010"}).status, 0);
    EXPECT_THAT(run({"rule", "show", "\\A"}).out, HasSubstr("10 of 12"));
    EXPECT_EQ(run({"rule", "move", "\\A", "--position", "0000000000009"}).status, 0);
    EXPECT_THAT(run({"rule", "show", "\\A"}).out, HasSubstr("9 of 12"));
}

TEST_F(CommandLineTest, NumbersOutOfTheirRangeAreNamedWithIt) {
    for (const auto& [arguments, says] :
         {std::pair{std::vector<std::string>{"task", "set", "\\t", "--filter", "-1"},
                    "--filter: \"-1\" is no number from 0 to 4294967295"},
          {{"task", "set", "\\t", "--filter", "4294967296"}, "--filter: \"4294967296\" is no number from 0 to"},
          {{"classification", "set", "A\\a", "--action-type", "x"}, "--action-type: \"x\" is no number from 0 to"},
          {{"rule", "move", "\\A", "--position", "0"}, "--position: \"0\" is no number from 1 to 4294967295"},
          {{"rule", "set", "\\A", "--match-type", "2147483648"}, "is no number from 0 to 2147483647"},
          {{"test", "a", "--min-coverage", "101"}, "--min-coverage: \"101\" is no number from 0 to 100"},
          {{"rule", "move", "\\A", "--position", "0x10"}, "--position: \"0x10\" is no number from 1 to"},
          {{"rule", "move", "\\A", "--position", "+5"}, "--position: \"+5\" is no number from 1 to"},
          {{"rule", "move", "\\A", "--position", " 5"}, "--position: \" 5\" is no number from 1 to"},
          {{"rule", "move", "\\A", "--position", "5 "}, "--position: \"5 \" is no number from 1 to"},
          {{"rule", "move", "\\A", "--position", "1e1"}, "--position: \"1e1\" is no number from 1 to"},
          {{"rule", "move", "\\A", "--position="}, "--position: \"\" is no number from 1 to"},
          {{"replay", "--envelopes", "a", "--bad-lines", "-1"}, "--bad-lines: \"-1\" is no number from 0 to"}}) {
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, HasSubstr(says));
    }
}

// Every kind of command that prints.
class PrintingCommand : public CommandLineTest, public testing::WithParamInterface<const char*> {
protected:
    PrintingCommand() {
        apply("zxpolicy: 1\nlists: [{name: L, addresses: [a@b.c]}]\nclassifications: [{name: C}]\n" +
              policyWithRoot("  tasks: [{name: t}]\n").substr(12));
        write("mails.tsv", "a@b.c\td@e.f\n");
        write("tests.yaml",
              "zxpolicyTest: 1\ntests: [{name: T, sender: a@b.c, expect: [{receiver: d@e.f, rule: '\\'}]}]\n");
        write("policy.yaml", policyWithRoot(""));
    }
};

INSTANTIATE_TEST_SUITE_P(All, PrintingCommand,
                         testing::Values("--help", "dump", "match --sender a@b.c --receiver d@e.f",
                                         "match --envelopes mails.tsv", "match --json --envelopes mails.tsv",
                                         "explain --sender a@b.c --receiver d@e.f", "replay --envelopes mails.tsv",
                                         "replay --envelopes mails.tsv --against policy.yaml",
                                         "report --envelopes mails.tsv --html page.html", "refs list L",
                                         "refs classification C --json", "lint", "list", "list --names", "list show L",
                                         "list check L a@b.c", "list export L", "list export L /dev/stdout",
                                         "list add L x@y.z --dry-run", "tree", "tree --json", "rule show '\\'",
                                         "task show '\\t'", "classification show", "rule set '\\' --comment c",
                                         "diff policy.yaml policy.yaml", "diff --decisions policy.yaml policy.yaml",
                                         "apply policy.yaml", "test tests.yaml"),
                         [](const auto& command) { return "Number" + std::to_string(command.index); });

TEST_P(PrintingCommand, FailsWhereTheDiskIsFull) {
    const Outcome outcome = runShell("$zxpolicy " + std::string(GetParam()) + " >/dev/full");
    EXPECT_EQ(outcome.status, 3) << GetParam();
    EXPECT_THAT(outcome.err, HasSubstr("No space left on device; free some space")) << GetParam();
}

TEST_P(PrintingCommand, FailsWhereStandardOutputIsClosed) {
    const Outcome outcome = runShell("$zxpolicy " + std::string(GetParam()) + " >&-");
    EXPECT_EQ(outcome.status, 3) << GetParam();
    EXPECT_THAT(outcome.err, HasSubstr("Bad file descriptor; it is closed")) << GetParam();
}

// The reader has gone when the program writes.
TEST_P(PrintingCommand, EndsQuietlyWhereAPipeIsClosed) {
    const Outcome outcome = runShell(
        "{ while [ ! -e closed ]; do sleep 0.01; done; env --default-signal=PIPE $zxpolicy " + std::string(GetParam()) +
        "; echo $? >status; } | { exec 0<&-; touch closed; while [ ! -s status ]; do sleep 0.01; done; }");
    EXPECT_EQ(outcome.status, 0) << GetParam();
    EXPECT_EQ(outcome.err, "") << GetParam();
    EXPECT_EQ(read(path("status")), std::to_string(128 + SIGPIPE) + "\n") << GetParam();
}

}  // namespace tool
