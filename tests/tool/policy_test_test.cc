// The command test: policy tests.
#include <gmock/gmock.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tool_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

const char* const kTestedPolicy =
    "zxpolicy: 1\n"
    "root:\n"
    "  conditions: [{sender: \"*\", receiver: \"*@*.example\"}]\n"
    "  tasks: [{name: scan, overridable: true}, {name: log}]\n"
    "  rules:\n"
    "    - name: Sales\n"
    "      conditions:\n"
    "        - {sender: \"*@partner.example\", receiver: \"*@sales.example\"}\n"
    "        - {sender: \"*@corp.example\", receiver: \"*@sales.example\"}\n"
    "      inactive: ['\\scan']\n"
    "      tasks: [{name: foot}]\n"
    "    - name: ByName\n"
    "      conditions: [{sender: \"*\", receiver: \"ann@*.example\"}]\n";

class PolicyTestTest : public ToolTest {
protected:
    PolicyTestTest() { apply(kTestedPolicy); }

    // Tests with these lines below "tests:".
    static std::string tests(const std::string& rest) { return "zxpolicyTest: 1\ntests:\n" + rest; }

    Outcome runTests(const std::string& text, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"test", write("tests.yaml", text)});
        return run(options);
    }

    json jsonOf(const std::string& text, int status) {
        const Outcome outcome = runTests(text, {"--json"});
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return json::parse(outcome.out);
    }
};

// All that there is to test.
const char* const kAllTests =
    "  - name: partners\n"
    "    sender: bob@partner.example\n"
    "    expect: [{receiver: x@sales.example, rule: \\Sales, tasks: ['\\log', '\\Sales\\foot']}]\n"
    "  - name: the null sender\n"
    "    sender: <>\n"
    "    mode: first\n"
    "    expect:\n"
    "      - {receiver: x@other.example, rule: \\, tasks: ['\\scan', '\\log']}\n"
    "      - {receiver: x@else.test, rule: none}\n"
    "  - name: by name\n"
    "    sender: bob@corp.example\n"
    "    mode: best\n"
    "    weight: name\n"
    "    priority: receiver\n"
    "    expect: [{receiver: ann@sales.example, rule: \\ByName}]\n"
    "  - name: by domain\n"
    "    sender: bob@corp.example\n"
    "    mode: best\n"
    "    expect: [{receiver: ann@sales.example, rule: \\Sales}]\n";

}  // namespace

TEST_F(PolicyTestTest, TestsThatPassAreCountedAndAllIsCovered) {
    const Outcome outcome = runTests(tests(kAllTests), {"--min-coverage", "100"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "4 tests: 4 passed, 0 failed\n"
              "coverage 100%: 3 of 3 rules, 4 of 4 conditions, 3 of 3 tasks\n");
}

TEST_F(PolicyTestTest, EachFailureShowsWhatDiffersForWhichReceiver) {
    const Outcome outcome = runTests(
        tests("  - name: wrong in all\n"
              "    sender: bob@partner.example\n"
              "    expect:\n"
              "      - {receiver: x@sales.example, rule: \\Sales, tasks: ['\\Sales\\foot', '\\scan', '\\log']}\n"
              "      - {receiver: y@sales.example, rule: \\Sales}\n"
              "      - {receiver: x@other.example, rule: \\Salse, tasks: ['\\scan', '\\log']}\n"
              "      - {receiver: x@else.test, rule: \\}\n"
              "  - name: right\n"
              "    sender: bob@partner.example\n"
              "    expect: [{receiver: x@else.test, rule: none}]\n"
              "  - name: wrong too\n"
              "    sender: <>\n"
              "    mode: best\n"
              "    priority: sender\n"
              "    weight: name\n"
              "    expect: [{receiver: x@sales.example, rule: none}]\n"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "FAILED wrong in all (" + path("tests.yaml") +
                               ":3:5)\n"
                               "  mail from bob@partner.example, first match\n"
                               "  to x@sales.example\n"
                               "    tasks  - \\Sales\\foot\n"
                               "           - \\scan\n"
                               "             \\log\n"
                               "           + \\Sales\\foot\n"
                               "  to x@other.example\n"
                               "    rule   - \\Salse  (the policy has no such rule)\n"
                               "           + \\\n"
                               "  to x@else.test\n"
                               "    rule   - \\\n"
                               "           + none\n"
                               "\n"
                               "FAILED wrong too (" +
                               path("tests.yaml") +
                               ":13:5)\n"
                               "  mail from <>, best match, priority sender, weight name\n"
                               "  to x@sales.example\n"
                               "    rule   - none\n"
                               "           + \\\n"
                               "\n"
                               "- is expected, + is what the policy does\n"
                               "\n"
                               "no test: rule \\ByName\n"
                               "no test: condition 2 of \\Sales: *@corp.example to *@sales.example\n"
                               "no test: condition 1 of \\ByName: * to ann@*.example\n"
                               "\n"
                               "3 tests: 1 passed, 2 failed\n"
                               "coverage 70%: 2 of 3 rules, 2 of 4 conditions, 3 of 3 tasks\n");
}

TEST_F(PolicyTestTest, JsonHasTheDocumentedShape) {
    const json report = jsonOf(tests("  - name: one\n    sender: bob@corp.example\n    expect:\n"
                                     "      - {receiver: x@sales.example, rule: \\, tasks: []}\n"
                                     "      - {receiver: x@else.test, rule: none}\n"),
                               1);
    EXPECT_EQ(
        report,
        json::parse(R"({"version":1,"tests":[{"name":"one","line":3,"passed":false,"sender":"bob@corp.example",)"
                    R"("mode":"first","priority":null,"weight":null,)"
                    R"("receivers":[{"receiver":"x@sales.example","passed":false,)"
                    R"("expected":{"rule":"\\","tasks":[]},)"
                    R"("actual":{"rule":"\\Sales","tasks":["\\log","\\Sales\\foot"]}},)"
                    R"({"receiver":"x@else.test","passed":true,"expected":{"rule":null,"tasks":null},)"
                    R"("actual":{"rule":null,"tasks":[]}}],"failure":null}],)"
                    R"("passed":0,"failed":1,"coverage":{"percent":40,)"
                    R"("rules":{"total":3,"covered":1,"missing":["\\","\\ByName"]},)"
                    R"("conditions":{"total":4,"covered":1,"missing":[)"
                    R"({"rule":"\\","condition":1,"senderPattern":"*","receiverPattern":"*@*.example"},)"
                    R"({"rule":"\\Sales","condition":1,"senderPattern":"*@partner.example",)"
                    R"("receiverPattern":"*@sales.example"},)"
                    R"({"rule":"\\ByName","condition":1,"senderPattern":"*","receiverPattern":"ann@*.example"}]},)"
                    R"("tasks":{"total":3,"covered":2,"missing":["\\scan"]}}})"))
        << report.dump();
}

TEST_F(PolicyTestTest, JsonTellsHowEachMailWasMatched) {
    const json report = jsonOf(tests(kAllTests), 0);
    EXPECT_EQ(report["tests"][1]["mode"], "first");
    EXPECT_EQ(report["tests"][1]["priority"], nullptr);
    EXPECT_EQ(report["tests"][2]["mode"], "best");
    EXPECT_EQ(report["tests"][2]["priority"], "receiver");
    EXPECT_EQ(report["tests"][2]["weight"], "name");
    EXPECT_EQ(report["tests"][3]["priority"], "total");
    EXPECT_EQ(report["tests"][3]["weight"], "domain");
}

TEST_F(PolicyTestTest, TheCoverageAskedForDecides) {
    const std::string text =
        tests("  - {name: a, sender: b@corp.example, expect: [{receiver: x@sales.example, rule: \\Sales}]}\n");
    EXPECT_EQ(runTests(text, {"--min-coverage", "40"}).status, 0);
    const Outcome little = runTests(text, {"--min-coverage", "41"});
    EXPECT_EQ(little.status, 1);
    EXPECT_THAT(little.out, HasSubstr("coverage 40%: 1 of 3 rules, 1 of 4 conditions, 2 of 3 tasks\n"
                                      "that is less than the 41% asked for\n"));
    const Outcome asJson = runTests(text, {"--min-coverage", "41", "--json"});
    EXPECT_EQ(asJson.status, 1);
    EXPECT_EQ(json::parse(asJson.out)["coverage"]["percent"], 40);
}

TEST_F(PolicyTestTest, APolicyFileIsTestedWithoutTheStore) {
    write("tests.yaml", tests(kAllTests));
    const std::string policy = write("policy.yaml", kTestedPolicy);
    const Outcome outcome =
        runPlain({"test", path("tests.yaml"), "--policy", policy, "--store", "sqlite:" + path("none.db")});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(access(path("none.db").c_str(), F_OK), 0) << "the store was made";
    EXPECT_EQ(runPlain({"test", path("tests.yaml"), "--store", "sqlite:" + path("none.db")}).status, 3);
}

TEST_F(PolicyTestTest, AnotherStoreIsTestedInItsPlace) {
    write("tests.yaml", tests(kAllTests));
    const Outcome outcome =
        runPlain({"test", path("tests.yaml"), "--policy", location(), "--store", "sqlite:" + path("none.db")});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const Outcome missing = run({"test", path("tests.yaml"), "--policy", "sqlite:" + path("none.db")});
    EXPECT_EQ(missing.status, 3);
    EXPECT_THAT(missing.err, HasSubstr("none.db"));
}

TEST_F(PolicyTestTest, WhatApplyWouldComplainOfIsAWarning) {
    write("tests.yaml", tests("  - {name: a, sender: b@c, expect: [{receiver: x@y, rule: none}]}\n"));
    const std::string policy = write("policy.yaml",
                                     "zxpolicy: 1\nlists: [{name: Empty}, {name: Full, addresses: [\"*@b\"]}]\nroot:\n"
                                     "  conditions: [{sender: a@b, receiver: c@d}]\n"
                                     "  rules: [{name: A, conditions: [{sender: (Nobody), receiver: \"*\"}]}]\n");
    const Outcome outcome = run({"test", path("tests.yaml"), "--policy", policy});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("zxpolicy: warning: " + policy + ":5:"));
    EXPECT_THAT(outcome.err, HasSubstr("zxpolicy: warning: " + policy +
                                       ": address list \"Empty\" has no addresses in the file, and is empty here\n"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("Full")));
}

TEST_F(PolicyTestTest, MalformedFilesAreRefusedByLineAndColumn) {
    const auto one = [](const std::string& rest) { return "  - {name: a, " + rest + "}\n"; };
    const std::string expect = "expect: [{receiver: x@y, rule: none}]";
    for (const auto& [text, place, says] : std::vector<std::tuple<std::string, const char*, const char*>>{
             {"", "1:1", "must begin with zxpolicyTest: 1"},
             {"zxpolicyTest: 2\ntests: []\n", "1:15", "test format \"2\" is not known"},
             {"zxpolicyTest: 1\n", "1:1", "key \"tests\" is missing in the test file"},
             {"zxpolicyTest: 1\ntests: []\n", "2:8", "there is no test"},
             {"zxpolicyTest: 1\ntests: {}\n", "2:8", "must be a sequence"},
             {"zxpolicyTest: 1\nmore: 1\ntests: []\n", "2:1", "unknown key \"more\" in the test file"},
             {tests("  - [\n"), "4:1", "not valid YAML"},
             {tests(one("sender: b@c")), "3:5", "key \"expect\" is missing in a test"},
             {tests(one(expect)), "3:5", "key \"sender\" is missing in a test"},
             {tests(one("sender: b@c, expect: []")), "3:36", "\"expect\" of a test is empty"},
             {tests(one("sender: b@c, colour: red, " + expect)), "3:28", "unknown key \"colour\" in a test"},
             {tests(one("sender: b@c, mode: bset, " + expect)), "3:34", "must be best or first, not \"bset\""},
             {tests(one("sender: b@c, weight: name, " + expect)), "3:36", "needs \"mode: best\" beside it"},
             {tests(one("sender: b@c, mode: best, priority: 1, " + expect)), "3:50", "must be a text"},
             {tests(one("sender: b@c, expect: [{receiver: x@y}]")), "3:37", "key \"rule\" is missing"},
             {tests(one("sender: b@c, expect: [{rule: none}]")), "3:37", "key \"receiver\" is missing"},
             {tests(one("sender: b@c, expect: [{receiver: \"\", rule: none}]")), "3:48", "is empty"},
             {tests(one("sender: b@c, expect: [{receiver: x@y, rule: Sales}]")), "3:59", "must be a path such as"},
             {tests(one("sender: b@c, expect: [{receiver: x@y, rule: none, tasks: []}]")), "3:72",
              "there are no tasks"},
             {tests(one("sender: b@c, expect: [{receiver: x@y, rule: none}, {receiver: x@y, rule: none}]")), "3:66",
              "receiver \"x@y\" stands twice in the test"},
             {tests(one("sender: b@c, " + expect) + one("sender: b@c, " + expect)), "4:5", "test \"a\" stands twice"},
             {tests("  - {name: \"\", sender: b@c, " + expect + "}\n"), "3:12", "\"name\" of a test is empty"}}) {
        const Outcome outcome = runTests(text);
        EXPECT_EQ(outcome.status, 2) << text;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("zxpolicy: " + path("tests.yaml") + ":" + place + ": ")) << text;
        EXPECT_THAT(outcome.err, HasSubstr(says));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    }
    EXPECT_EQ(run({"test", path("none.yaml")}).status, 2);
}

TEST_F(PolicyTestTest, StandardInputIsReadAndNamed) {
    const Outcome outcome =
        run({"test", "-"}, tests("  - {name: a, sender: b@c, expect: [{receiver: x@y, rule: \\}]}\n"));
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("FAILED a (standard input:3:5)\n"));
}

TEST_F(PolicyTestTest, StandardInputIsReadOnce) {
    EXPECT_EQ(run({"test", "-", "--policy", "-"}, kTestedPolicy).status, 2);
    EXPECT_EQ(run({"test", write("tests.yaml", tests(kAllTests)), "--policy", "-"}, kTestedPolicy).status, 0);
}

TEST_F(PolicyTestTest, TheExampleTestsPass) {
    const Outcome outcome = run({"test", ZX_EXAMPLES "/tests.yaml", "--policy", ZX_EXAMPLES "/policy.yaml"});
    EXPECT_EQ(outcome.status, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("\n8 tests: 8 passed, 0 failed\n"));
}

TEST_F(PolicyTestTest, HostileTextsStayInTheirLines) {
    const std::string text = tests(
        "  - {name: \"a\\e[2J\\nb\", sender: \"b\\u202E@c\", "
        "expect: [{receiver: \"x\\e@y.example\", rule: \"\\\\\\e\", tasks: [\"\\e\"]}]}\n");
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--json"}}) {
        const Outcome outcome = runTests(text, options);
        EXPECT_EQ(outcome.status, 1) << outcome.err;
        EXPECT_THAT(outcome.out, Not(HasSubstr("\x1b")));
        EXPECT_THAT(outcome.out, Not(HasSubstr("\xE2\x80\xAE")));
        EXPECT_THAT(outcome.out, HasSubstr("[2J"));
    }
}

}  // namespace tool
