#include <gmock/gmock.h>

#include <sstream>

#include "change/apply.h"
#include "policy/policy_reader.h"
#include "stored/handles.h"
#include "stored/refs_command.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RefsTest : public ToolTest {
protected:
    // Applies a policy with whatever dangling conditions.
    void applyAny(const std::string& policy) {
        const Outcome outcome = run({"apply", "--allow-dangling", "-"}, policy);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }

    std::string refs(std::vector<std::string> arguments, int status = 0) {
        arguments.insert(arguments.begin(), "refs");
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
};

const std::string kReferring =
    "zxpolicy: 1\nlists: [{name: Staff}, {name: Other}]\n"
    "classifications: [{name: Infected}, {name: Unused}]\n" +
    policyWithRoot(R"(  tasks:
    - {name: scan, outcomes: {bad: Infected, Infected: x}}
  rules:
    - name: A
      conditions: [{sender: a@b, receiver: "*"}, {sender: (staff), receiver: (Staff)}]
      rules:
        - name: B
          rules: [{name: C, conditions: [{sender: (Staff), receiver: "*"}]}]
        - {name: D, matchType: 3}
      tasks: [{name: t, outcomes: {o: x}}, {name: u, outcomes: {p: infected}}]
    - {name: E, conditions: [{sender: "*", receiver: (STAFF)}]}
)")
        .substr(12);

}  // namespace

TEST_F(RefsTest, TellsTheRulesOfAListAndTheirConditions) {
    applyAny(kReferring);
    EXPECT_EQ(refs({"list", "Staff"}),
              "rule    place                    text\n"
              "\\A\\B\\C  sender of condition 1    (Staff)\n"
              "\\A      sender of condition 2    (staff)\n"
              "\\A      receiver of condition 2  (Staff)\n"
              "\\E      receiver of condition 1  (STAFF)\n"
              "\n"
              "3 rules refer to address list \"Staff\"\n"
              "2 places name no list (letter case counts)\n");
    EXPECT_EQ(refs({"list", "Other"}, 1), "no rule refers to address list \"Other\"\n");
    EXPECT_THAT(refs({"list", "STAFF"}), EndsWith("there is no address list \"STAFF\"; there is \"Staff\"\n"));
    for (const std::string& name : {std::string("(Staff)"), std::string("(staff)")})
        EXPECT_EQ(refs({"list", name}, 1), "no rule refers to address list \"" + name +
                                               "\"\nthere is no address list \"" + name + "\"; there is \"Staff\"\n");
}

TEST_F(RefsTest, TellsTheRulesOfAClassificationAndTheirOutcomes) {
    applyAny(kReferring);
    EXPECT_EQ(refs({"classification", "infected"}),
              "rule  place                        text\n"
              "\\A    outcome \"p\" of task \\A\\u     infected\n"
              "\\     outcome \"bad\" of task \\scan  Infected\n"
              "\n"
              "2 rules refer to classification \"infected\"\n"
              "1 place names no classification (letter case counts)\n"
              "there is no classification \"infected\"; there is \"Infected\"\n");
    EXPECT_THAT(refs({"classification", "x"}), HasSubstr("outcome \"Infected\" of task \\scan  x\n"));
    EXPECT_EQ(refs({"classification", "Unused"}, 1), "no rule refers to classification \"Unused\"\n");
    EXPECT_EQ(refs({"classification", "bad"}, 1),
              "no rule refers to classification \"bad\"\nthere is no classification \"bad\"\n");
}

TEST_F(RefsTest, ReportsAsJson) {
    applyAny(kReferring);
    const std::string expected =
        R"x({"version":1,"entity":"list","name":"Staff","exists":true,"checker":"\\A\\B\\C","rules":[)x"
        R"x({"rule":"\\A\\B\\C","places":[{"condition":1,"side":"sender","text":"(Staff)","found":true}]},)x"
        R"x({"rule":"\\A","places":[{"condition":2,"side":"sender","text":"(staff)","found":false},)x"
        R"x({"condition":2,"side":"receiver","text":"(Staff)","found":true}]},)x"
        R"x({"rule":"\\E","places":[{"condition":1,"side":"receiver","text":"(STAFF)","found":false}]}]})x"
        "\n";
    EXPECT_EQ(refs({"list", "Staff", "--format", "json"}), expected);
    EXPECT_EQ(refs({"list", "Staff", "--json"}), expected);
    EXPECT_EQ(refs({"classification", "Infected", "--json"}),
              R"x({"version":1,"entity":"classification","name":"Infected","exists":true,"checker":"\\A","rules":[)x"
              R"x({"rule":"\\A","places":[{"task":"\\A\\u","outcome":"p","text":"infected","found":false}]},)x"
              R"x({"rule":"\\","places":[{"task":"\\scan","outcome":"bad","text":"Infected","found":true}]}]})x"
              "\n");
    EXPECT_EQ(refs({"list", "Nosuch", "--json"}, 1),
              R"x({"version":1,"entity":"list","name":"Nosuch","exists":false,"checker":null,"rules":[]})x"
              "\n");
}

TEST_F(RefsTest, NamesOfAllLengthsAndShapes) {
    const std::string longest(255, 'n');
    const std::string tooLong(256, 'n');
    applyAny("zxpolicy: 1\nlists: [{name: x}, {name: " + longest + "}, {name: \"(p)\"}]\n" +
             policyWithRoot("  rules:\n    - name: R\n      conditions:\n        - {sender: (x), receiver: (" +
                            longest + ")}\n        - {sender: (" + tooLong + "), receiver: \"((p))\"}\n" +
                            "      tasks: [{name: t, outcomes: {a: " + tooLong + ", b: \"(p)\"}}]\n")
                 .substr(12));
    for (const std::string& name : {std::string("x"), longest, tooLong, std::string("(p)")})
        EXPECT_THAT(refs({"list", name}), HasSubstr("one rule refers to address list \"" + name.substr(0, 100)));
    EXPECT_THAT(refs({"list", tooLong}), HasSubstr("there is no address list"));
    EXPECT_THAT(refs({"classification", "(p)"}), HasSubstr("one rule refers"));
    EXPECT_THAT(refs({"list", "p"}, 1), StartsWith("no rule refers"));
    for (const char* kind : {"list", "classification"})
        EXPECT_THAT(refs({kind, ""}, 1), HasSubstr("no rule refers to"));
    EXPECT_THAT(refs({"list", "\x1b[2J"}, 1), HasSubstr("\"\\x1B[2J\""));
}

// The checker reads texts of outcomes of up to 255 characters.
TEST_F(RefsTest, WhatTheCheckerPassesOverIsTold) {
    const std::string tooLong(256, 'n');
    applyAny(
        policyWithRoot("  rules:\n    - {name: A, tasks: [{name: t, outcomes: {a: " + tooLong + ", b: Found}}]}\n"));
    EXPECT_THAT(refs({"classification", tooLong}), HasSubstr("the library's reference checker finds none of them\n"));
    EXPECT_THAT(refs({"classification", tooLong, "--json"}),
                HasSubstr("\"checker\":null,\"rules\":[{\"rule\":\"\\\\A\""));
    EXPECT_THAT(refs({"classification", "Found", "--json"}), HasSubstr("\"checker\":\"\\\\A\""));
    EXPECT_THAT(refs({"classification", "Found"}), Not(HasSubstr("finds none")));
}

TEST_F(RefsTest, LongPathsAreTold) {
    std::string policy = "zxpolicy: 1\nlists: [{name: L}]\n" + policyWithRoot("").substr(12);
    std::string path;
    for (int i = 0; i < 12; ++i) {
        const std::string indent(static_cast<size_t>(i) * 4 + 2, ' ');
        const std::string name(i == 11 ? 143 : 255, static_cast<char>('a' + i));
        policy += indent + "rules:\n" + indent + "  - name: " + name + "\n";
        path += "\\" + name;
    }
    policy += std::string(12 * 4 + 2, ' ') + "conditions: [{sender: (L), receiver: \"*\"}]\n";
    applyAny(policy);
    EXPECT_THAT(refs({"list", "L"}), HasSubstr(path + "  sender of condition 1"));
}

// The first buffer has 1,024 bytes: paths around that size, where the checker wants one byte more than they take.
TEST_F(RefsTest, PathsOfTheBuffersSizeAreTold) {
    for (const size_t length : {1021U, 1022U, 1023U, 1024U, 1025U}) {
        std::string policy = "zxpolicy: 1\nlists: [{name: L}]\n" + policyWithRoot("").substr(12);
        size_t left = length;
        std::string indent = "  ";
        std::string path;
        while (left != 0) {
            const size_t part = left > 400 ? 200 : left > 200 ? left / 2 : left;
            const std::string name(part - 1, 'n');
            policy += indent + "rules:\n" + indent + "  - name: " + name + "\n";
            path += "\\" + name;
            indent += "    ";
            left -= part;
        }
        applyAny(policy + indent + "conditions: [{sender: (L), receiver: \"*\"}]\n");
        ASSERT_EQ(path.size(), length);
        EXPECT_THAT(refs({"list", "L", "--json"}), HasSubstr("\"rule\":\"\\\\nnn"));
        EXPECT_THAT(refs({"list", "L"}), HasSubstr("\n" + path + "  sender")) << length;
    }
}

TEST_F(RefsTest, AStoreThatCannotBeReadIsNoAnswer) {
    applyAny(kReferring);
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle rule(zxreg_openKey(store.get(), "Rule\\Mail\\rules\\E", &result));
        zxreg_deleteValue(rule.get(), "comment", &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    const Outcome outcome = run({"refs", "list", "Staff"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("cannot read rule \\E: ZXPOL_E_NOT_FOUND (0x81021804)"));
}

TEST_F(RefsTest, WhatTheLibraryPassesOverIsNoAnswer) {
    const auto numberIn = [this](const char* key, const char* name, uint32_t number) {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle opened(zxreg_openKey(store.get(), key, &result));
        zxreg_setValue(opened.get(), name, ZXREG_NUMBER, &number, sizeof number, &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    };
    const auto refused = [this](const char* kind, const char* name, const char* says) {
        const Outcome outcome = run({"refs", kind, name});
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(says));
    };
    const uint32_t noOrder = 0x80000000;
    applyAny(kReferring);
    numberIn("Rule\\Mail\\rules\\E", "matchType", 3);
    refused("list", "Other", "cannot read all of the conditions of rule \\E: 1 are stored, and 0 can be read");
    numberIn("Rule\\Mail\\rules\\E", "matchType", 0);
    numberIn("Rule\\Mail\\rules\\A\\rules\\B", "order", noOrder);
    refused("list", "Other", "cannot read all of the rules below rule \\A: \"B\" is stored");
    refused("classification", "Unused", "cannot read all of the rules below rule \\A: \"B\" is stored");
    numberIn("Rule\\Mail\\rules\\A\\rules\\B", "order", 1);
    numberIn("Rule\\Mail\\rules\\A\\tasks\\u", "order", noOrder);
    refused("classification", "Unused", "cannot read all of the tasks of rule \\A: \"u\" is stored");
    refs({"list", "Other"}, 1);  // tasks refer to no list
}

TEST_F(RefsTest, AsksWithoutWriting) {
    applyAny(policyWithRoot(""));
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        zxreg_deleteKey(store.get(), "AddressList", &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    const std::string before = read(path("policy.db-wal"));
    EXPECT_THAT(refs({"list", "Staff"}, 1), HasSubstr("there is no address list \"Staff\"\n"));
    EXPECT_THAT(refs({"classification", "Staff"}, 1), HasSubstr("there is no classification"));
    dump();
    EXPECT_EQ(read(path("policy.db-wal")), before);
    int result = ZXREG_S_OK;
    const KeyHandle store(zxreg_openStore(location().c_str(), &result));
    const KeyHandle lists(zxreg_openKey(store.get(), "AddressList", &result));
    EXPECT_EQ(lists.get(), nullptr);
}

// What no policy file can say, a program may have written all the same.
TEST_F(RefsTest, AStoreThatNoFileCanSayIsLookedThrough) {
    applyAny(kReferring);
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle rule(zxreg_openKey(store.get(), "Rule\\Mail\\rules\\E", &result));
        const char text[] = "(Staff],*";
        zxreg_setValue(rule.get(), "condition2", ZXREG_STRING, text, sizeof text, &result);
        zxreg_setValue(rule.get(), "color", ZXREG_STRING, text, sizeof text, &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    EXPECT_EQ(run({"dump"}).status, 3);
    EXPECT_THAT(refs({"list", "Staff"}), HasSubstr("\\E      sender of condition 2    (Staff]\n"));
}

TEST_F(RefsTest, AStoreInMemoryAnswersToo) {
    const Store store("memory:refs", Store::Missing::Create);
    applyPolicy(store, "p", readPolicy("p", kReferring), false);
    for (const OutputFormat format : {OutputFormat::Text, OutputFormat::Json}) {
        std::ostringstream out;
        EXPECT_EQ(runRefs({"memory:refs", ZXPOL_REF_ADDRLIST, "Staff", format}, out), kSuccess);
        EXPECT_THAT(out.str(), HasSubstr("(STAFF)"));
        out.str("");
        EXPECT_EQ(runRefs({"memory:refs", ZXPOL_REF_CLASSIFICATION, "Unused", format}, out), kAnswerIsNo);
        EXPECT_THAT(out.str(), HasSubstr("Unused"));
    }
}

}  // namespace tool
