#include <gmock/gmock.h>

#include <sys/stat.h>

#include "stored/handles.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;
using testing::Not;

using ApplyTest = ToolTest;

const std::string kBefore = policyWithRoot(R"(  tasks:
    - {name: scan, filter: 26, enable: true, outcomes: {infected: Infected, old: Old}, setting: {level: 2, sub: {x: 1}}}
    - {name: spam, filter: 12, overridable: true}
  rules:
    - name: Sales
      conditions: [{sender: "*", receiver: "*@sales.example"}]
      inactive: ["\\spam"]
      rules: [{name: North, tasks: [{name: t}]}]
    - {name: Support}
    - {name: Labs}
)");

const std::string kAfter = policyWithRoot(R"(  tasks:
    - {name: spam, filter: 12, overridable: true}
    - {name: scan, filter: 26, enable: false, outcomes: {infected: Other, new: New}, setting: {level: "2", sub: 5}}
  rules:
    - {name: Labs}
    - name: Sales
      displayName: Sales department
      conditions: [{sender: "*", receiver: "*@sales.example"}, {sender: "*", receiver: "*@shop.example"}]
      inactive: ["\\scan"]
    - {name: Board}
)");

}  // namespace

TEST_F(ApplyTest, SaysWhatItCreatedChangedMovedAndDeleted) {
    apply(kBefore);
    EXPECT_EQ(
        apply(kAfter),
        "moved task \\scan (to position 2)\n"
        "changed task \\scan (enable: true -> false; deleted outcome \"old\"; outcome \"infected\": \"Infected\" -> "
        "\"Other\"; outcome \"new\": \"New\"; deleted setting \"sub\\\\x\"; changed setting \"level\"; changed "
        "setting \"sub\")\n"
        "deleted rule \\Support\n"
        "moved rule \\Sales (to position 2)\n"
        "created rule \\Board\n"
        "changed rule \\Sales (displayName: \"\" -> \"Sales department\"; conditions: added 1; inactive: added 1, "
        "removed 1)\n"
        "deleted rule \\Sales\\North (with tasks: 1)\n"
        "1 created, 2 changed, 2 moved, 2 deleted\n");
    EXPECT_EQ(apply(kAfter), "nothing to change\n");
}

TEST_F(ApplyTest, ReportsAsJson) {
    apply(kBefore);
    const std::string policy = policyWithRoot("  tasks: [{name: scan, filter: 26}]\n");
    const Outcome outcome = run({"apply", "--format", "json", "-"}, policy);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr(R"({"change":"deleted","what":"task","name":"\\spam","details":[]})"));
    EXPECT_THAT(outcome.out, HasSubstr(R"("created":0,"changed":1,"moved":0,"deleted":4})"));
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
    EXPECT_EQ(
        run({"apply", "--format", "json", "-"}, policy).out,
        "{\"version\":1,\"dryRun\":false,\"changes\":[],\"created\":0,\"changed\":0,\"moved\":0,\"deleted\":0}\n");
}

TEST_F(ApplyTest, ADryRunSaysTheSameAndLeavesTheStoreAsItWas) {
    apply(kBefore);
    const std::string before = dump();
    const Outcome dry = run({"apply", "--dry-run", "-"}, kAfter);
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_EQ(dump(), before);
    std::string real = apply(kAfter);
    real.insert(real.size() - 1, "; dry run: nothing was written");
    EXPECT_EQ(dry.out, real);
    EXPECT_EQ(run({"apply", "--dry-run", "-"}, kAfter).out, "nothing to change\n");
}

TEST_F(ApplyTest, ADryRunMakesNoStore) {
    const Outcome outcome = run({"apply", "--dry-run", "-"}, kBefore);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("created rule \\Sales\n"));
    struct stat status {};
    EXPECT_NE(stat(path("policy.db").c_str(), &status), 0);
}

TEST_F(ApplyTest, AMalformedConditionTakesEverythingBack) {
    apply(kBefore);
    const std::string before = dump();
    const std::string file =
        write("bad.yaml", policyWithRoot("  comment: changed\n  rules:\n    - name: New\n"
                                         "      conditions:\n"
                                         "        - {sender: \"*\", receiver: \"*\"}\n"
                                         "        - {sender: \"jo*@example.com\", receiver: \"*\"}\n"));
    const Outcome outcome = run({"apply", file});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "zxpolicy: " + file +
                               ":9:11: cannot set condition {sender: \"jo*@example.com\", receiver: \"*\"} of rule "
                               "\\New: ZXPOL_E_INVALID_FORMAT (0x8102000a): an address, condition or path is "
                               "malformed; correct it\n");
    EXPECT_EQ(dump(), before);
}

TEST_F(ApplyTest, ConditionsThatTheParentDoesNotCoverAreAWarning) {
    const std::string file =
        write("p.yaml", policyWithRoot("  rules:\n    - name: A\n"
                                       "      conditions: [{sender: \"*\", receiver: \"*@a.example\"}]\n"
                                       "      rules:\n        - name: B\n          conditions:\n"
                                       "            - {sender: \"*\", receiver: \"x@a.example\"}\n"
                                       "            - {sender: \"*\", receiver: \"x@b.example\"}\n"));
    for (const char* expected : {"2 created\n", "nothing to change\n"}) {
        const Outcome outcome = run({"apply", file});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "zxpolicy: warning: " + file +
                                   ":11:15: condition {sender: \"*\", receiver: \"x@b.example\"} of rule \\A\\B is not "
                                   "covered by a condition of its parent\n");
        EXPECT_THAT(outcome.out, testing::EndsWith(expected));
    }
    EXPECT_THAT(dump(), HasSubstr("x@b.example"));
}

TEST_F(ApplyTest, ChangesInLetterCaseAloneAreMade) {
    apply(
        policyWithRoot("  inactive: ['\\task']\n  tasks: [{name: task, outcomes: {a: x}, setting: {b: 1}}]\n"
                       "  rules: [{name: sales, conditions: [{sender: a@b.c, receiver: d@e.f}]}]\n"));
    const std::string upper = policyWithRoot(
        "  inactive: ['\\Task']\n  tasks: [{name: Task, outcomes: {A: x}, setting: {B: 1}}]\n"
        "  rules: [{name: Sales, conditions: [{sender: A@b.c, receiver: d@e.f}]}]\n");
    apply(upper);
    const std::string dumped = dump();
    for (const char* text : {"\\\\Task", "name: Task", " A: x", " B: 1", "name: Sales", "A@b.c"})
        EXPECT_THAT(dumped, HasSubstr(text));
    EXPECT_EQ(apply(upper), "nothing to change\n");
}

TEST_F(ApplyTest, AMarkForATaskThatIsDeletedStaysWhenTheFileHasIt) {
    const std::string marks = "  rules: [{name: A, inactive: ['\\gone']}]\n";
    apply(policyWithRoot("  tasks: [{name: gone}]\n" + marks));
    EXPECT_EQ(apply(policyWithRoot(marks)), "deleted task \\gone\n1 deleted\n");
    EXPECT_THAT(dump(), HasSubstr("\\\\gone"));
}

TEST_F(ApplyTest, AGapInTheNumberingOfConditionsIsClosed) {
    const std::string policy = policyWithRoot(
        "  rules: [{name: A, conditions: [{sender: a@x.y, receiver: \"*\"}, {sender: b@x.y, receiver: \"*\"},"
        " {sender: c@x.y, receiver: \"*\"}]}]\n");
    apply(policy);
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle rule(zxreg_openKey(store.get(), "Rule\\Mail\\rules\\A", &result));
        zxreg_deleteValue(rule.get(), "condition2", &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    EXPECT_THAT(dump(), Not(HasSubstr("b@x.y")));
    EXPECT_EQ(apply(policyWithRoot("  rules: [{name: A, conditions: [{sender: d@x.y, receiver: \"*\"}]}]\n")),
              "changed rule \\A (conditions: added 1, removed 2)\n1 changed\n");
    EXPECT_THAT(dump(), Not(HasSubstr("c@x.y")));
}

TEST_F(ApplyTest, PasswordsAreNeitherDumpedNorChangedUnlessAsked) {
    const auto policy = [](const std::string& rest) {
        return "zxpolicy: 1\nlists:\n  - {name: L, type: directory" + rest +
               "}\nroot:\n  conditions: [{sender: \"*\", receiver: \"*\"}]\n";
    };
    apply(policy(", password: \"s3cret\", port: 1"));
    EXPECT_THAT(dump(), Not(HasSubstr("s3cret")));
    EXPECT_THAT(dump(), Not(HasSubstr("password")));
    EXPECT_EQ(apply(policy(", port: 2")), "changed address list L (port: 1 -> 2)\n1 changed\n");
    EXPECT_THAT(run({"dump", "--with-secrets"}).out, HasSubstr("    password: \"s3cret\"\n"));
    EXPECT_EQ(apply(run({"dump", "--with-secrets"}).out), "nothing to change\n");
    EXPECT_EQ(apply(policy(", port: 2, password: other")), "changed address list L (password)\n1 changed\n");
    EXPECT_THAT(run({"dump", "--with-secrets"}).out, HasSubstr("    password: \"other\"\n"));
    EXPECT_EQ(apply(policy(", port: 2, password: ''")), "changed address list L (password)\n1 changed\n");
    EXPECT_THAT(run({"dump", "--with-secrets"}).out, HasSubstr("    password: \"\"\n"));
}

TEST_F(ApplyTest, ExclusiveFiltersAndListsComeAndGo) {
    const auto policy = [](const std::string& top) { return "zxpolicy: 1\n" + top + policyWithRoot("").substr(12); };
    EXPECT_EQ(apply(policy("exclusiveFilters: [{filter: 26, priority: asc}, {filter: 1, priority: desc}]\n"
                           "lists: [{name: Staff, type: directory, server: a}]\n")),
              "created address list Staff\ncreated exclusive filter 1\ncreated exclusive filter 26\n3 created\n");
    EXPECT_EQ(apply(policy("exclusiveFilters: [{filter: 26, priority: desc}]\n"
                           "lists: [{name: staff, type: directory, server: a}]\n")),
              "deleted address list Staff\ncreated address list staff\ndeleted exclusive filter 1\n"
              "changed exclusive filter 26 (priority: asc -> desc)\n1 created, 1 changed, 2 deleted\n");
    EXPECT_EQ(apply(policy("")), "deleted address list staff\ndeleted exclusive filter 26\n2 deleted\n");
}

TEST_F(ApplyTest, OtherMatchTypesComeAndGo) {
    const auto policy = [](const std::string& rest) { return policyWithRoot("  rules: [{name: A" + rest + "}]\n"); };
    const std::string condition = ", conditions: [{sender: a@b.c, receiver: \"*\"}]";
    apply(policy(condition));
    EXPECT_EQ(apply(policy(", matchType: 3")),
              "changed rule \\A (matchType: 0 -> 3; conditions: removed 1)\n1 changed\n");
    EXPECT_THAT(dump(), HasSubstr("matchType: 3"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    EXPECT_EQ(apply(policy(condition)), "changed rule \\A (matchType: 3 -> 0; conditions: added 1)\n1 changed\n");
    EXPECT_EQ(apply(policyWithRoot("  rules: [{name: B, matchType: 7}]\n")),
              "deleted rule \\A\ncreated rule \\B\n1 created, 1 deleted\n");
    EXPECT_EQ(apply(policyWithRoot("  rules: [{name: B, matchType: 7, rules: [{name: C}]}]\n")),
              "created rule \\B\\C\n1 created\n");
    EXPECT_THAT(dump(), HasSubstr("matchType: 7"));
}

TEST_F(ApplyTest, AStoreThatCannotBeWrittenKeepsItsPolicy) {
    const Outcome outcome = runPlain({"--store", "sqlite:" + path("none/policy.db"), "apply", "-"}, {}, kBefore);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("ZXREG_E_IO (0x81021901)"));
}

TEST_F(ToolTest, PasswordsDoNotGetIntoErrors) {
    for (const char* password : {"my, Passw0rd", "!Passw0rd x", "[Passw0rd]", "*Passw0rd", "\"Passw0rd"}) {
        const std::string file =
            write("p.yaml", std::string("zxpolicy: 1\nlists:\n  - {name: A, type: directory, password: ") + password +
                                "}\nroot:\n  conditions: [{sender: \"*\", receiver: \"*\"}]\n");
        const Outcome outcome = run({"apply", file});
        EXPECT_EQ(outcome.status, 3) << password;
        EXPECT_EQ(outcome.err.find("Passw0rd"), std::string::npos) << outcome.err;
    }
}

TEST_F(ToolTest, ADryRunIntoAMissingFolderFailsAsTheRunWould) {
    const std::string file = write("p.yaml", policyWithRoot(""));
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"apply", file}, {"apply", "--dry-run", file}}) {
        std::vector<std::string> arguments{"--store", "sqlite:" + path("none/policy.db")};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_NE(outcome.err.find("cannot open the store"), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(run({"apply", "--dry-run", file}).status, 0);
}

TEST_F(ToolTest, AFileThatIsNestedTooDeeplyIsToldSo) {
    const Outcome outcome = run({"apply", "-"}, "zxpolicy: 1\nroot: " + std::string(5000, '['));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_NE(outcome.err.find("nested too deeply"), std::string::npos) << outcome.err;
}

}  // namespace tool
