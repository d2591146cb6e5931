// The commands on the tree of rules and on single rules.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "edit_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using RuleCommandTest = EditTest;

const std::string kNorth =
    "        - name: North\n"
    "          conditions: [{sender: \"*\", receiver: n@sales.example}]\n"
    "          inactive: [\"\\\\Sales\\\\footer\"]\n";

}  // namespace

// ---- looking -------------------------------------------------------------------------------------------

TEST_F(RuleCommandTest, TheTreeShowsRulesWithConditionsMarksAndTasks) {
    EXPECT_EQ(run({"tree"}).out,
              "\\  Everything\n"
              "│  when  *  -> *\n"
              "│  task  scan  filter 26\n"
              "│  task  spam  filter 12, overridable\n"
              "├─ Sales  Sales department\n"
              "│  │  when  *           -> *@sales.example\n"
              "│  │  when  (Partners)  -> *@sales.example\n"
              "│  │  off   \\spam\n"
              "│  │  task  footer  filter 7, overridable\n"
              "│  ├─ North\n"
              "│  │     when  *  -> n@sales.example\n"
              "│  │     off   \\Sales\\footer\n"
              "│  └─ South\n"
              "└─ Labs\n"
              "      when  *@labs.example  -> *\n");
    EXPECT_EQ(run({"tree", "\\Labs\\"}).out, "\\Labs\n   when  *@labs.example  -> *\n");
}

TEST_F(RuleCommandTest, TheTreeBreaksLinesThatAreWiderThanTheTerminal) {
    const auto tree = [&](const char* columns) {
        return runPlain({"--store", location(), "tree", "\\Sales\\North"}, {std::string("COLUMNS=") + columns}).out;
    };
    const std::string mark = "   off   \\Sales\\footer\n";
    EXPECT_EQ(tree("30"), "\\Sales\\North\n   when  *  -> n@sales.example\n" + mark);
    EXPECT_EQ(tree("29"), "\\Sales\\North\n   when  *\n           -> n@sales.example\n" + mark);
    EXPECT_EQ(tree("nonsense"), tree("30"));
}

TEST_F(RuleCommandTest, TheTreeIsNestedInJson) {
    const json tree = json::parse(run({"tree", "--json"}).out);
    EXPECT_EQ(tree["version"], 1);
    const json& root = tree["tree"];
    EXPECT_EQ(root["path"], "\\");
    EXPECT_EQ(root["tasks"][0], json::parse(R"({"path":"\\scan","displayName":"","comment":"","filter":26,"enable":true,
                              "overridable":false,"outcomes":{"infected":"Infected","old":"Old"},
                              "setting":{"level":2,"sub":{"x":1,"y":"2"}}})"));
    ASSERT_EQ(root["rules"].size(), 2U);
    EXPECT_EQ(root["rules"][0]["rules"][0],
              json::parse(R"({"path":"\\Sales\\North","displayName":"","comment":"","matchType":0,
                              "conditions":[{"sender":"*","receiver":"n@sales.example"}],
                              "inactive":["\\Sales\\footer"],"tasks":[],"rules":[]})"));
    EXPECT_EQ(json::parse(run({"tree", "\\Sales\\North", "--json"}).out)["tree"], root["rules"][0]["rules"][0]);
}

TEST_F(RuleCommandTest, OneRuleIsShownWithItsPlaceAndTheRulesBelowIt) {
    EXPECT_EQ(run({"rule", "show", "\\Sales"}).out,
              "rule \\Sales\n"
              "  display name  Sales department\n"
              "  position      1 of 2\n"
              "  when          *           -> *@sales.example\n"
              "  when          (Partners)  -> *@sales.example\n"
              "  off           \\spam\n"
              "  task          footer  filter 7, overridable\n"
              "  rule          \\Sales\\North\n"
              "  rule          \\Sales\\South\n");
    const json rule = json::parse(run({"rule", "show", "\\Labs", "--format", "json"}).out);
    EXPECT_EQ(rule, json::parse(R"({"version":1,"rule":{"path":"\\Labs","displayName":"","comment":"c","matchType":0,
                                    "conditions":[{"sender":"*@labs.example","receiver":"*"}],"inactive":[],
                                    "tasks":[],"position":2,"children":[]}})"));
    const json root = json::parse(run({"rule", "show", "\\", "--json"}).out)["rule"];
    EXPECT_EQ(root["position"], nullptr);
    EXPECT_EQ(root["children"], json::parse(R"(["\\Sales","\\Labs"])"));
}

TEST_F(RuleCommandTest, ARuleThatIsNotThereIsNotShown) {
    for (const char* path : {"\\Sale", "\\sales", "\\Sales\\North\\X"})
        for (const std::vector<std::string>& command : {std::vector<std::string>{"rule", "show", path}, {"tree", path}})
            EXPECT_THAT(refuse(command), AllOf(HasSubstr("there is no rule "), HasSubstr("ZXPOL_E_NOT_FOUND (0x8102")));
    for (const char* path : {"", "Sales", "/Sales"})
        EXPECT_THAT(refuse({"tree", path}, 2), HasSubstr("does not begin with a backslash"));
    for (const char* path : {"\\\\Sales", "\\\\", "\\Sales\\\\"})
        EXPECT_THAT(refuse({"rule", "show", path}, 2), HasSubstr("has an empty name in it")) << path;
}

TEST_F(RuleCommandTest, HostileTextsSteerNoTerminal) {
    apply(
        policyWithRoot("  rules: [{name: \"a\\e[31mb\", displayName: \"\\u202Ex\\n\", conditions: [], tasks: "
                       "[{name: \"t\\r\", displayName: \"\\e]0;x\", setting: {\"k\\e\": \"v\\e\"}}]}]\n"));
    const std::string path = "\\a\x1b[31mb";
    for (const std::vector<std::string>& command : {std::vector<std::string>{"tree"},
                                                    {"rule", "show", path},
                                                    {"task", "show", path + "\\t\r"},
                                                    {"tree", "--json"},
                                                    {"rule", "show", path, "--json"},
                                                    {"task", "show", path + "\\t\r", "--json"},
                                                    {"rule", "set", path, "--comment", "\x1b[0m"},
                                                    {"rule", "move", path, "--position", "1"}}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        for (const char* steering : {"\x1b", "\r", "\xe2\x80\xae"})
            EXPECT_EQ(outcome.out.find(steering), std::string::npos) << outcome.out;
    }
    EXPECT_THAT(run({"rule", "show", "\\\x1b"}).err, HasSubstr("\\x1B"));
}

// ---- changing ------------------------------------------------------------------------------------------

TEST_F(RuleCommandTest, ARuleIsAddedWithAllThatItHolds) {
    EXPECT_EQ(change({"rule", "add", "\\Sales\\West", "--condition", "*,w@sales.example", "--condition",
                      "(Partners),v@sales.example", "--display-name", "West wing", "--comment", "new", "--inactivate",
                      "\\Sales\\footer", "--position", "2"}),
              "created rule \\Sales\\West\n");
    EXPECT_EQ(err, "");
    EXPECT_TRUE(holds(policyWith("        - {name: South}\n",
                                 "        - name: West\n"
                                 "          displayName: West wing\n"
                                 "          comment: new\n"
                                 "          conditions: [{sender: \"*\", receiver: w@sales.example}, "
                                 "{sender: (Partners), receiver: v@sales.example}]\n"
                                 "          inactive: [\"\\\\Sales\\\\footer\"]\n"
                                 "        - {name: South}\n")));
}

TEST_F(RuleCommandTest, ARuleIsAddedAtTheEndUnlessAPositionIsGiven) {
    change({"rule", "add", "\\Last"});
    change({"rule", "add", "\\First", "--position", "1"});
    change({"rule", "add", "\\Far", "--position", "4294967295"});
    const json rules = json::parse(run({"rule", "show", "\\", "--json"}).out)["rule"]["children"];
    EXPECT_EQ(rules, json::parse(R"(["\\First","\\Sales","\\Labs","\\Last","\\Far"])"));
}

TEST_F(RuleCommandTest, ANameThatIsTakenOrNoneIsRefused) {
    for (const char* path : {"\\\\New", "\\Sales\\\\New", "\\New\\\\"})
        EXPECT_THAT(refuse({"rule", "add", path}, 2), HasSubstr("has an empty name in it")) << path;
    EXPECT_THAT(refuse({"rule", "add", "\\Sales"}), HasSubstr("ZXPOL_E_ALREADY_EXISTS (0x81021805)"));
    EXPECT_THAT(refuse({"rule", "add", "\\sALES"}), HasSubstr("there is \"Sales\""));
    EXPECT_THAT(refuse({"rule", "add", "\\None\\X"}), HasSubstr("there is no rule \\None: ZXPOL_E_NOT_FOUND"));
    EXPECT_THAT(refuse({"rule", "add", "\\" + std::string(256, 'x')}, 2), HasSubstr("longer than 255 bytes"));
    EXPECT_THAT(refuse({"rule", "add", "\\"}, 2), HasSubstr("the root rule"));
}

TEST_F(RuleCommandTest, WhatIsSetChangesAndNothingElse) {
    EXPECT_EQ(change({"rule", "set", "\\Sales\\North", "--display-name", "N", "--comment", "x"}),
              "changed rule \\Sales\\North (displayName: \"\" -> \"N\"; comment: \"\" -> \"x\")\n");
    EXPECT_TRUE(holds(policyWith("        - name: North\n",
                                 "        - name: North\n          displayName: N\n          comment: x\n")));
    EXPECT_EQ(change({"rule", "set", "\\Sales\\North", "--display-name", "", "--comment="}),
              "changed rule \\Sales\\North (displayName: \"N\" -> \"\"; comment: \"x\" -> \"\")\n");
    EXPECT_TRUE(holds(policy()));
    EXPECT_EQ(change({"rule", "set", "\\Sales\\North"}), "nothing to change\n");
    EXPECT_EQ(change({"rule", "set", "\\", "--comment", "x"}), "changed rule \\ (comment: \"\" -> \"x\")\n");
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--comment", std::string(512, 'x')}, 2),
                HasSubstr("the comment is longer than 511 bytes"));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--display-name", std::string(256, 'x')}, 2), HasSubstr("255"));
}

TEST_F(RuleCommandTest, ConditionsAreAddedAndRemoved) {
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--remove-condition", "*@LABS.example,*", "--add-condition",
                      "a@labs.example,b@x", "--add-condition", "(Partners),*"}),
              "changed rule \\Labs (conditions: added 2, removed 1)\n");
    EXPECT_TRUE(holds(policyWith("[{sender: \"*@labs.example\", receiver: \"*\"}]",
                                 "[{sender: a@labs.example, receiver: b@x}, {sender: (Partners), receiver: "
                                 "\"*\"}]")));
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--add-condition", "A@Labs.example,B@X"}), "nothing to change\n");
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--add-condition", "(Partners),*"}), "nothing to change\n");
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--remove-condition", "*,*"}),
                AllOf(HasSubstr("there is no condition \"*,*\" of rule \\Labs"), HasSubstr("ZXPOL_E_NOT_FOUND")));
}

TEST_F(RuleCommandTest, LetterCaseTellsTheListsOfConditionsApart) {
    EXPECT_THAT(refuse({"rule", "set", "\\Sales", "--remove-condition", "(partners),*@sales.example"}),
                HasSubstr("there is no condition"));
    const std::string other = "(partners),*@sales.example";
    EXPECT_THAT(refuse({"rule", "set", "\\Sales", "--add-condition", other}), HasSubstr("in another letter case"));
    EXPECT_EQ(change({"rule", "set", "\\Sales", "--add-condition", other, "--allow-dangling"}),
              "changed rule \\Sales (conditions: added 1)\n");
    change({"rule", "set", "\\Sales", "--remove-condition", other});
    EXPECT_TRUE(holds(policy()));
}

TEST_F(RuleCommandTest, TheConditionInTheSpellingThatIsAskedForGoes) {
    const std::string both =
        "[{sender: \"*@labs.example\", receiver: \"*\"}, {sender: \"*@LABS.example\", receiver: \"*\"}]";
    apply(policyWith("[{sender: \"*@labs.example\", receiver: \"*\"}]", both));
    change({"rule", "set", "\\Labs", "--remove-condition", "*@LABS.example,*"});
    EXPECT_TRUE(holds(policy()));
}

TEST_F(RuleCommandTest, ConditionsThatAreNoneAreRefused) {
    for (const char* text : {"", "a@b", ",", "a@b,", ",a@b", " a@b,c@d", "a@b,c@d "})
        EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--add-condition", text}, 2), HasSubstr("condition")) << text;
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--add-condition", "bla,*"}),
                AllOf(HasSubstr("cannot set condition {sender: \"bla\", receiver: \"*\"} of rule \\Labs"),
                      HasSubstr("ZXPOL_E_INVALID_FORMAT (0x8102000a)")));
    EXPECT_THAT(refuse({"rule", "set", "\\", "--remove-condition", "*,*"}, 2), HasSubstr("the root rule"));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--match-type", "1"}, 2), HasSubstr("match type"));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--match-type", "-1"}, 2), HasSubstr("--match-type"));
}

TEST_F(RuleCommandTest, TheMatchTypeChangesWithTheConditions) {
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--match-type", "3", "--remove-condition", "*@labs.example,*"}),
              "changed rule \\Labs (matchType: 0 -> 3; conditions: removed 1)\n");
    EXPECT_EQ(run({"tree", "\\Labs"}).out, "\\Labs\n   type  3\n");
    EXPECT_EQ(change({"rule", "add", "\\Labs\\Below"}), "created rule \\Labs\\Below\n");
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--match-type", "0", "--add-condition", "*@labs.example,*"}),
              "changed rule \\Labs (matchType: 3 -> 0; conditions: added 1)\n");
}

TEST_F(RuleCommandTest, ConditionsThatNameNoListAreRefusedUnlessAllowed) {
    const std::vector<std::string> command{"rule", "set", "\\Labs", "--add-condition", "(Partner),*"};
    EXPECT_THAT(refuse(command),
                AllOf(HasSubstr("the sender \"(Partner)\" of a condition of rule \\Labs names no list"),
                      HasSubstr("--allow-dangling"), HasSubstr("ZXPOL_E_NOT_FOUND (0x81021804)")));
    std::vector<std::string> allowed = command;
    allowed.emplace_back("--allow-dangling");
    change(allowed);
    EXPECT_THAT(err, AllOf(StartsWith("zxpolicy: warning: " + location()), HasSubstr("\"(Partner)\"")));
    // What was so before is no reason to refuse anything.
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--comment", "d"}), "changed rule \\Labs (comment: \"c\" -> \"d\")\n");
    EXPECT_EQ(err, "");
}

TEST_F(RuleCommandTest, ConditionsThatTheParentDoesNotCoverAreRefusedUnlessAllowed) {
    const std::vector<std::string> command{
        "rule", "add", "\\Labs\\A", "--condition", "a@labs.example,*", "--condition", "b@else.example,*"};
    EXPECT_THAT(refuse(command),
                AllOf(HasSubstr("condition {sender: \"b@else.example\", receiver: \"*\"} of rule "
                                "\\Labs\\A is not covered by a condition of its parent; nothing"),
                      HasSubstr("--allow-uncovered"), HasSubstr("ZXPOL_E_CONDITION_CHECK (0x81021809)")));
    std::vector<std::string> allowed = command;
    allowed.emplace_back("--allow-uncovered");
    EXPECT_EQ(change(allowed), "created rule \\Labs\\A\n");
    EXPECT_THAT(err, HasSubstr("warning: " + location() + ": condition {sender: \"b@else.example\""));
    change({"rule", "set", "\\Labs", "--comment", "d"});
    EXPECT_EQ(err, "");
}

TEST_F(RuleCommandTest, AConditionThatRulesBelowNeedStaysUnlessAllowed) {
    change({"rule", "set", "\\Sales", "--add-condition", "*,x@n.example"});
    change({"rule", "set", "\\Sales\\South", "--add-condition", "*,x@n.example", "--add-condition",
            "a@b.example,x@n.example"});
    const std::vector<std::string> command{"rule", "set", "\\Sales", "--remove-condition", "*,x@n.example"};
    EXPECT_THAT(refuse(command), AllOf(HasSubstr("of rule \\Sales\\South is not covered"), HasSubstr(" (and 1 more); "),
                                       HasSubstr("ZXPOL_E_CONDITION_CHECK")));
    std::vector<std::string> allowed = command;
    allowed.emplace_back("--allow-uncovered");
    EXPECT_EQ(change(allowed), "changed rule \\Sales (conditions: removed 1)\n");
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 2);
}

TEST_F(RuleCommandTest, InactiveMarksComeAndGo) {
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--inactivate", "\\scan", "--inactivate", "\\spam\\"}),
              "changed rule \\Labs (inactive: added 2)\n");
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--inactivate", "\\scan"}), "nothing to change\n");
    EXPECT_EQ(change({"rule", "set", "\\Labs", "--activate", "\\SCAN\\"}),
              "changed rule \\Labs (inactive: removed 1)\n");
    EXPECT_TRUE(holds(policyWith("      comment: c\n", "      comment: c\n      inactive: [\"\\\\spam\"]\n")));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--activate", "\\scan"}),
                HasSubstr("there is no inactive mark \"\\\\scan\" of rule \\Labs: ZXPOL_E_NOT_FOUND"));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--inactivate", "\\scam"}),
                HasSubstr("there is no task \\scam: ZXPOL_E_NOT_FOUND"));
    EXPECT_THAT(refuse({"rule", "set", "\\Labs", "--inactivate", "scan"}, 2), HasSubstr("backslash"));
}

TEST_F(RuleCommandTest, ARuleMovesAmongItsSiblings) {
    EXPECT_EQ(change({"rule", "move", "\\Sales", "--position", "2"}), "moved rule \\Sales (to position 2)\n");
    EXPECT_EQ(json::parse(run({"rule", "show", "\\", "--json"}).out)["rule"]["children"],
              json::parse(R"(["\\Labs","\\Sales"])"));
    EXPECT_EQ(change({"rule", "move", "\\Sales", "--position", "7"}), "nothing to change\n");
    EXPECT_EQ(change({"rule", "move", "\\Sales", "--position", "1"}), "moved rule \\Sales (to position 1)\n");
    EXPECT_TRUE(holds(policy()));
    EXPECT_THAT(refuse({"rule", "move", "\\Sales", "--position", "0"}, 2), HasSubstr("--position"));
    EXPECT_THAT(refuse({"rule", "move", "\\Sale", "--position", "1"}), HasSubstr("there is no rule \\Sale"));
    EXPECT_THAT(refuse({"rule", "move", "\\", "--position", "1"}, 2), HasSubstr("root rule"));
}

TEST_F(RuleCommandTest, ARuleWithRulesBelowItIsRemovedOnlyWithThem) {
    EXPECT_THAT(refuse({"rule", "remove", "\\Sales"}),
                AllOf(HasSubstr("has rules below it: 2"), HasSubstr("--recursive")));
    EXPECT_EQ(change({"rule", "remove", "\\Sales\\North"}), "deleted rule \\Sales\\North\n");
    EXPECT_TRUE(holds(policyWith(kNorth, "")));
    EXPECT_EQ(change({"rule", "remove", "\\Sales", "--recursive"}),
              "deleted rule \\Sales (with rules below it: 1; with tasks: 1)\n");
    EXPECT_THAT(refuse({"rule", "remove", "\\Sales", "--recursive"}), HasSubstr("there is no rule \\Sales"));
    EXPECT_THAT(refuse({"rule", "remove", "\\", "--recursive"}, 2), HasSubstr("root rule"));
}

}  // namespace tool
