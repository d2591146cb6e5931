// The commands on classifications and their actions.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "edit_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

using ClassificationCommandTest = EditTest;

const std::string kReport = "      - {name: report, actionType: 5}\n";

}  // namespace

TEST_F(ClassificationCommandTest, AllAreShownOrOneOrOneAction) {
    EXPECT_EQ(run({"classification", "show"}).out,
              "classification  actions  display name\n"
              "Infected              2  Infected mail\n"
              "Odd                   0\n");
    EXPECT_EQ(run({"classification", "show", "Infected"}).out,
              "classification \"Infected\"\n"
              "  display name  Infected mail\n"
              "  action        quarantine  type 3\n"
              "  action        report      type 5\n");
    EXPECT_EQ(run({"classification", "show", "Infected\\quarantine"}).out,
              "action \"quarantine\" of classification \"Infected\"\n"
              "  position  1 of 2\n"
              "  type      3\n"
              "  setting   folder       \"/q\"\n"
              "  setting   limits\\days  30\n");
}

TEST_F(ClassificationCommandTest, TheSameIsToldInJson) {
    const json all = json::parse(run({"classification", "show", "--json"}).out);
    EXPECT_EQ(all["version"], 1);
    ASSERT_EQ(all["classifications"].size(), 2U);
    const json infected = json::parse(run({"classification", "show", "Infected", "--json"}).out);
    EXPECT_EQ(infected["classification"], all["classifications"][0]);
    EXPECT_EQ(infected["classification"]["actions"][1],
              json::parse(R"({"name":"report","displayName":"","comment":"","actionType":5,"setting":{}})"));
    EXPECT_EQ(json::parse(run({"classification", "show", "Infected\\quarantine", "--json"}).out),
              json::parse(R"({"version":1,"action":{"name":"quarantine","displayName":"","comment":"","actionType":3,
                              "setting":{"folder":"/q","limits":{"days":30}},"classification":"Infected",
                              "position":1}})"));
    apply(policyWithRoot(""));
    EXPECT_EQ(run({"classification", "show", "--json"}).out, "{\"version\":1,\"classifications\":[]}\n");
    EXPECT_EQ(run({"classification", "show"}).out, "there are no classifications\n");
}

TEST_F(ClassificationCommandTest, WhatIsNotThereIsNotShown) {
    EXPECT_THAT(refuse({"classification", "show", "infected"}),
                HasSubstr("there is no classification \"infected\": ZXPOL_E_NOT_FOUND (0x81021804)"));
    EXPECT_THAT(refuse({"classification", "show", "Infected\\x"}),
                HasSubstr("there is no action \"x\" of classification \"Infected\": ZXPOL_E_NOT_FOUND (0x81021804)"));
    EXPECT_THAT(refuse({"classification", "show", "Infected\\"}, 2), HasSubstr("is empty"));
}

TEST_F(ClassificationCommandTest, ClassificationsAndActionsAreAdded) {
    EXPECT_EQ(change({"classification", "add", "New", "--display-name", "N", "--comment", "c"}),
              "created classification New\n");
    EXPECT_EQ(change({"classification", "add", "New\\b", "--action-type", "9", "--setting", "k=1", "--comment", "x"}),
              "created action New\\b\n");
    EXPECT_EQ(change({"classification", "add", "New\\a", "--position", "1"}), "created action New\\a\n");
    EXPECT_TRUE(holds(policyWith("  - {name: Odd}\n",
                                 "  - {name: Odd}\n"
                                 "  - {name: New, displayName: N, comment: c, actions: [{name: a}, {name: b, "
                                 "actionType: 9, comment: x, setting: {k: 1}}]}\n")));
    EXPECT_THAT(refuse({"classification", "add", "ODD"}), HasSubstr("ZXPOL_E_ALREADY_EXISTS (0x81021805)"));
    EXPECT_THAT(refuse({"classification", "add", "New\\A"}), HasSubstr("there is \"a\": ZXPOL_E_ALREADY_EXISTS"));
    EXPECT_THAT(refuse({"classification", "add", "None\\a"}), HasSubstr("there is no classification \"None\""));
    EXPECT_THAT(refuse({"classification", "add", "New\\a\\b"}, 2), HasSubstr("backslash"));
    EXPECT_THAT(refuse({"classification", "add", ""}, 2), HasSubstr("is empty"));
}

TEST_F(ClassificationCommandTest, WhatIsSetChangesAndNothingElse) {
    EXPECT_EQ(change({"classification", "set", "Infected", "--display-name", ""}),
              "changed classification Infected (displayName: \"Infected mail\" -> \"\")\n");
    EXPECT_EQ(change({"classification", "set", "Infected\\quarantine", "--action-type", "4", "--remove-setting",
                      "limits", "--setting", "folder=/r"}),
              "changed action Infected\\quarantine (actionType: 3 -> 4; deleted setting \"limits\\\\days\"; deleted "
              "setting \"limits\"; changed setting \"folder\")\n");
    EXPECT_EQ(change({"classification", "set", "Infected\\quarantine"}), "nothing to change\n");
    EXPECT_THAT(refuse({"classification", "set", "None", "--comment", "x"}), HasSubstr("there is no classification"));
    for (const std::vector<std::string>& option :
         {std::vector<std::string>{"--action-type", "1"}, {"--setting", "a=1"}, {"--remove-setting", "a"}}) {
        std::vector<std::string> command{"classification", "set", "Infected"};
        command.insert(command.end(), option.begin(), option.end());
        EXPECT_THAT(refuse(command, 2), HasSubstr("CLASSIFICATION\\ACTION"));
    }
    EXPECT_THAT(refuse({"classification", "add", "X", "--position", "1"}, 2), HasSubstr("CLASSIFICATION\\ACTION"));
}

TEST_F(ClassificationCommandTest, AnActionMovesAmongThoseOfItsClassification) {
    EXPECT_EQ(change({"classification", "move", "Infected\\report", "--position", "1"}),
              "moved action Infected\\report (to position 1)\n");
    EXPECT_EQ(json::parse(run({"classification", "show", "Infected\\report", "--json"}).out)["action"]["position"], 1);
    EXPECT_EQ(change({"classification", "move", "Infected\\report", "--position", "9"}),
              "moved action Infected\\report (to position 2)\n");
    EXPECT_TRUE(holds(policy()));
    EXPECT_THAT(refuse({"classification", "move", "Infected", "--position", "1"}, 2), HasSubstr("have no order"));
    EXPECT_THAT(refuse({"classification", "move", "Infected\\x", "--position", "1"}), HasSubstr("there is no action"));
}

TEST_F(ClassificationCommandTest, AClassificationThatOutcomesNameStaysUnlessAllowed) {
    EXPECT_EQ(change({"classification", "remove", "Odd"}), "deleted classification Odd\n");
    EXPECT_EQ(change({"classification", "remove", "Infected\\report"}), "deleted action Infected\\report\n");
    EXPECT_THAT(refuse({"classification", "remove", "Infected\\report"}), HasSubstr("there is no action"));
    EXPECT_THAT(
        refuse({"classification", "remove", "Infected"}),
        AllOf(HasSubstr("outcomes of rule \\ name classification \"Infected\""), HasSubstr("--allow-dangling")));
    change({"task", "set", "\\Sales\\footer", "--outcome", "o=INFECTED"});
    EXPECT_THAT(refuse({"classification", "remove", "Infected"}),
                HasSubstr("outcomes of rule \\Sales and 1 more name classification \"Infected\""));
    EXPECT_EQ(change({"classification", "remove", "Infected", "--allow-dangling"}),
              "deleted classification Infected (with actions: 1)\n");
    EXPECT_THAT(refuse({"classification", "remove", "Infected"}), HasSubstr("there is no classification"));
}

}  // namespace tool
