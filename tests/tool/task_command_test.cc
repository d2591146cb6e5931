// The commands on single tasks.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "edit_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

using TaskCommandTest = EditTest;

const std::string kFooter = "{name: footer, filter: 7, overridable: true}";

}  // namespace

TEST_F(TaskCommandTest, OneTaskIsShownWithOutcomesAndSettings) {
    EXPECT_EQ(run({"task", "show", "\\scan"}).out,
              "task \\scan\n"
              "  position     1 of 2\n"
              "  filter       26\n"
              "  enable       true\n"
              "  overridable  false\n"
              "  outcome      infected  -> Infected\n"
              "  outcome      old       -> Old\n"
              "  setting      level  2\n"
              "  setting      sub\\x  1\n"
              "  setting      sub\\y  \"2\"\n");
    EXPECT_EQ(json::parse(run({"task", "show", "\\Sales\\footer", "--json"}).out),
              json::parse(R"({"version":1,"task":{"path":"\\Sales\\footer","displayName":"","comment":"","filter":7,
                              "enable":true,"overridable":true,"outcomes":{},"setting":{},"position":1}})"));
    EXPECT_THAT(refuse({"task", "show", "\\Sales\\scan"}), HasSubstr("there is no task \\Sales\\scan: ZXPOL_E_NOT_F"));
    EXPECT_THAT(refuse({"task", "show", "\\None\\scan"}), HasSubstr("there is no rule \\None: ZXPOL_E_NOT_FOUND"));
    EXPECT_THAT(refuse({"task", "show", "\\"}, 2), HasSubstr("root rule"));
}

TEST_F(TaskCommandTest, ATaskIsAddedWithAllThatItHolds) {
    EXPECT_EQ(
        change({"task",          "add",       "\\Sales\\tag",   "--filter",  "031",           "--enable",  "false",
                "--overridable", "true",      "--display-name", "Tag",       "--comment",     "c",         "--outcome",
                "hit=Odd",       "--setting", "text=[a, b]",    "--setting", "deep\\er\\n=5", "--setting", "none=",
                "--position",    "1"}),
        "created task \\Sales\\tag\n");
    EXPECT_EQ(err, "");
    EXPECT_TRUE(holds(policyWith(
        kFooter,
        "{name: tag, filter: 31, enable: false, overridable: true, displayName: Tag, comment: c, outcomes: {hit: Odd}, "
        "setting: {text: [a, b], deep: {er: {n: 5}}, none: \"\"}}, " +
            kFooter)));
}

TEST_F(TaskCommandTest, ANewTaskIsOnAndLast) {
    EXPECT_EQ(change({"task", "add", "\\Sales\\tag"}), "created task \\Sales\\tag\n");
    EXPECT_TRUE(holds(policyWith(kFooter, kFooter + ", {name: tag}")));
    EXPECT_THAT(refuse({"task", "add", "\\Sales\\TAG"}), HasSubstr("ZXPOL_E_ALREADY_EXISTS (0x81021805)"));
    EXPECT_THAT(refuse({"task", "add", "\\None\\t"}), HasSubstr("there is no rule \\None"));
    EXPECT_THAT(refuse({"task", "add", "\\Sales\\" + std::string(249, 'x')}, 2), HasSubstr("longer than 255 bytes"));
}

TEST_F(TaskCommandTest, WhatIsSetChangesAndNothingElse) {
    EXPECT_EQ(change({"task", "set", "\\scan", "--enable", "false", "--filter", "4294967295"}),
              "changed task \\scan (filter: 26 -> 4294967295; enable: true -> false)\n");
    EXPECT_TRUE(holds(policyWith("scan, filter: 26,", "scan, filter: 4294967295, enable: false,")));
    change({"task", "set", "\\scan", "--enable", "true", "--filter", "26"});
    EXPECT_TRUE(holds(policy()));
    EXPECT_EQ(change({"task", "set", "\\scan", "--enable", "true"}), "nothing to change\n");
    for (const auto& [option, value] : {std::pair{"--filter", "-1"},
                                        {"--filter", "4294967296"},
                                        {"--filter", "x"},
                                        {"--enable", "yes"},
                                        {"--overridable", ""}})
        EXPECT_THAT(refuse({"task", "set", "\\scan", option, value}, 2), HasSubstr(option)) << value;
}

TEST_F(TaskCommandTest, OutcomesAreSetAndRemoved) {
    EXPECT_EQ(change({"task", "set", "\\scan", "--outcome", "infected=Odd", "--outcome", "new=a=b", "--remove-outcome",
                      "old"}),
              "changed task \\scan (deleted outcome \"old\"; outcome \"infected\": \"Infected\" -> \"Odd\"; outcome "
              "\"new\": \"a=b\")\n");
    EXPECT_EQ(err, "zxpolicy: note: the text \"a=b\" of outcome \"new\" of task \\scan names no classification\n");
    EXPECT_TRUE(holds(policyWith("{infected: Infected, old: Old}", "{infected: Odd, new: a=b}")));
    EXPECT_THAT(refuse({"task", "set", "\\scan", "--remove-outcome", "old"}),
                AllOf(HasSubstr("there is no outcome \"old\" of task \\scan"), HasSubstr("ZXPOL_E_NOT_FOUND")));
    EXPECT_THAT(refuse({"task", "set", "\\scan", "--outcome", "INFECTED=Odd"}),
                AllOf(HasSubstr("cannot create outcome \"INFECTED\" of task \\scan: there is \"infected\""),
                      HasSubstr("ZXPOL_E_ALREADY_EXISTS")));
    for (const char* outcome : {"x", "=x", "x=", "a\\b=x"})
        EXPECT_THAT(refuse({"task", "set", "\\scan", "--outcome", outcome}, 2), HasSubstr("outcome")) << outcome;
}

TEST_F(TaskCommandTest, SettingsAreSetAndRemovedWithWhatIsWithinThem) {
    EXPECT_EQ(change({"task", "set", "\\scan", "--setting", "level=\"2\"", "--setting", "sub\\x={z: 1}", "--setting",
                      "words=two words", "--remove-setting", "sub\\y"}),
              "changed task \\scan (deleted setting \"sub\\\\y\"; changed setting \"level\"; changed setting "
              "\"sub\\\\x\"; created setting \"sub\\\\x\\\\z\"; created setting \"words\")\n");
    EXPECT_TRUE(
        holds(policyWith("{level: 2, sub: {x: 1, y: \"2\"}}", "{level: \"2\", sub: {x: {z: 1}}, words: two words}")));
    change({"task", "set", "\\scan", "--remove-setting", "sub", "--setting", "level\\below=1"});
    EXPECT_TRUE(holds(policyWith("{level: 2, sub: {x: 1, y: \"2\"}}", "{level: {below: 1}, words: two words}")));
    EXPECT_THAT(refuse({"task", "set", "\\scan", "--remove-setting", "sub"}),
                AllOf(HasSubstr("there is no setting \"sub\" of task \\scan"), HasSubstr("ZXPOL_E_NOT_FOUND")));
}

TEST_F(TaskCommandTest, SettingsThatNoFileCouldSayAreRefused) {
    std::string deep = "a";
    for (int i = 0; i < 16; ++i)
        deep += "\\a";
    for (const std::string& setting :
         {std::string("level"), std::string("=1"), std::string("a=true"), std::string("a=-1"), std::string("a=*x"),
          std::string("a=[x"), std::string("a\\\\b=1"), std::string("\\a=1"), std::string("a=[[x]]"), deep + "=1",
          std::string(256, 'x') + "=1", std::string("a=\xff"), std::string("a={b: 1, B: 2}")})
        EXPECT_THAT(refuse({"task", "set", "\\scan", "--setting", setting}, 2), HasSubstr("setting")) << setting;
    for (const char* setting : {"LEVEL=3", "SUB\\new=1", "sub\\X=1"})
        EXPECT_THAT(refuse({"task", "set", "\\scan", "--setting", setting}),
                    AllOf(HasSubstr("cannot create setting"), HasSubstr("ZXPOL_E_ALREADY_EXISTS")))
            << setting;
    change({"task", "set", "\\scan", "--remove-setting", "level", "--setting", "LEVEL=2"});
}

TEST_F(TaskCommandTest, ATaskMovesAmongThoseOfItsRule) {
    EXPECT_EQ(change({"task", "move", "\\scan", "--position", "2"}), "moved task \\scan (to position 2)\n");
    EXPECT_EQ(json::parse(run({"task", "show", "\\scan", "--json"}).out)["task"]["position"], 2);
    EXPECT_EQ(change({"task", "move", "\\scan", "--position", "1"}), "moved task \\scan (to position 1)\n");
    EXPECT_TRUE(holds(policy()));
    EXPECT_THAT(refuse({"task", "move", "\\Sales\\scan", "--position", "1"}), HasSubstr("there is no task"));
}

TEST_F(TaskCommandTest, ATaskGoesWithTheMarksForItInItsRuleAndBelow) {
    change({"rule", "set", "\\Sales", "--inactivate", "\\Sales\\footer"});
    EXPECT_EQ(change({"task", "remove", "\\Sales\\footer"}),
              "deleted task \\Sales\\footer\n"
              "changed rule \\Sales (inactive: removed 1)\n"
              "changed rule \\Sales\\North (inactive: removed 1)\n");
    EXPECT_TRUE(holds(policyWith("      tasks: [" + kFooter +
                                     "]\n"
                                     "      rules:\n"
                                     "        - name: North\n"
                                     "          conditions: [{sender: \"*\", receiver: n@sales.example}]\n"
                                     "          inactive: [\"\\\\Sales\\\\footer\"]\n",
                                 "      rules:\n"
                                 "        - name: North\n"
                                 "          conditions: [{sender: \"*\", receiver: n@sales.example}]\n")));
    EXPECT_THAT(refuse({"task", "remove", "\\Sales\\footer"}), HasSubstr("there is no task \\Sales\\footer"));
}

}  // namespace tool
