#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

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

TEST_F(CommandLineTest, OutputThatCannotBeWrittenIsAFailure) {
    apply(policyWithRoot(""));
    const std::string command = std::string(ZX_TOOL) + " --store " + location() + " dump >/dev/full 2>" + path("err");
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_THAT(read(path("err")), HasSubstr("standard output"));
}

}  // namespace tool
