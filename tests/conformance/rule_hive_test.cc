// Opening the rule hive, its root rule, and rules by their full paths.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class RuleHive : public zxtest::PolicyTest {
protected:
    // The code of opening the rule at `path`; the rule must come with a success only.
    int openCode(const char* path) {
        int error = ZXPOL_S_OK;
        const Handle found(zxpol_openRuleByFullName(ruleHive(), path, &error));
        EXPECT_EQ(error >= 0, found != nullptr);
        return error;
    }
    std::string displayName(const char* path) {
        _ZxPolRuleAttr attr = {};
        int error = ZXPOL_S_OK;
        zxpol_getRuleAttrib(rule(path).get(), &attr, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        return attr.displayName;
    }
    void reopen() {
        closeHives();
        openHives();
    }
};
ZXTEST_ON_BOTH_ENGINES(RuleHive);

TEST_P(RuleHive, MakesTheRootRuleWithItsDefaults) {
    const RawKey root = rawRule();
    EXPECT_EQ("", root.text("displayName"));
    EXPECT_EQ("", root.text("comment"));
    EXPECT_EQ(0u, root.number("matchType"));
    EXPECT_EQ(1u, root.number("order"));
    EXPECT_EQ("*,*", root.text("condition1"));
    EXPECT_EQ(5u, root.valueNames().size());
    EXPECT_EQ((Lines{"rules", "inactive", "tasks"}), root.subkeys());
}

TEST_P(RuleHive, OpeningTwiceLeavesOneRootWithOneCondition) {
    int error = ZXPOL_S_OK;
    const Handle second(zxpol_openRuleHive(store(), 0, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    reopen();
    EXPECT_EQ(Lines{"Mail"}, raw("Rule").subkeys());
    EXPECT_EQ(Lines{"* -> *"}, conditionsOf("\\"));
}

TEST_P(RuleHive, ARootWithoutConditionsGetsTheDefaultBackAndNothingElse) {
    RawKey root = rawRule();
    root.setText("displayName", "kept");
    root.setNumber("order", 7);
    root.removeValue("condition1");
    reopen();
    EXPECT_EQ(Lines{"* -> *"}, conditionsOf("\\"));
    EXPECT_EQ("kept", rawRule().text("displayName"));
    EXPECT_EQ(7u, rawRule().number("order"));
}

TEST_P(RuleHive, ARootWithOtherConditionsKeepsThem) {
    rawRule().setText("condition1", "a@b.c,*");
    reopen();
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\"));
}

TEST_P(RuleHive, ARootWhoseAttributesCannotBeReadIsMadeAnew) {
    for (const char* missing : {"matchType", "comment"}) {
        RawKey root = rawRule();
        root.setText("displayName", "lost");
        root.setNumber("order", 7);
        root.removeValue(missing);
        reopen();
        EXPECT_EQ("", rawRule().text("displayName")) << missing;
        EXPECT_EQ(1u, rawRule().number("order")) << missing;
        EXPECT_EQ(0u, rawRule().number("matchType")) << missing;
    }
}

TEST_P(RuleHive, AMissingDisplayNameIsNotNoticed) {
    RawKey root = rawRule();
    root.setText("comment", "kept");
    root.removeValue("displayName");
    reopen();
    EXPECT_EQ("kept", rawRule().text("comment"));
    EXPECT_EQ(std::nullopt, rawRule().text("displayName"));
}

TEST_P(RuleHive, ARootThatIsNotMatchedByAddressesOpensAllTheSame) {
    rawRule().setNumber("matchType", 1);
    rawRule().removeValue("condition1");
    reopen();
    EXPECT_EQ(std::nullopt, rawRule().text("condition1"));
}

TEST_P(RuleHive, TheBackslashIsTheRoot) {
    rawRule().setText("displayName", "the root");
    EXPECT_EQ("the root", displayName("\\"));
    int error = ZXPOL_S_OK;
    const Handle root(zxpol_openRootRule(ruleHive(), &error));
    ASSERT_NE(nullptr, root);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(ZXPOL_HANDLE_RULE, root->kind);
}

TEST_P(RuleHive, APathNamesEachLevel) {
    addRule("\\", "A");
    addRule("\\A", "B");
    addRule("\\A\\B", "C");
    EXPECT_EQ("A", displayName("\\A"));
    EXPECT_EQ("B", displayName("\\A\\B"));
    EXPECT_EQ("C", displayName("\\A\\B\\C"));
    EXPECT_EQ("C", displayName("\\A\\B\\C\\"));
}

TEST_P(RuleHive, ATrailingBackslashIsNotPartOfTheName) {
    addRule("\\", "A", "a@b.c");
    const Handle a = rule("\\A\\");
    const zxtest::Conditions uncovered{{"*", "*"}};
    rawRule().setText("condition1", "a@b.c,*");
    _ZxPolErrorCond** list = nullptr;
    int error = ZXPOL_S_OK;
    zxpol_addConditionEx(a.get(), uncovered.list(), ZXPOL_COND_CHECK_HIERARCHY, &list, &error);
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);
    ASSERT_NE(nullptr, list);
    EXPECT_STREQ("\\A", list[0]->ruleName);
    zxpol_freeErrorConds(list, &error);
}

TEST_P(RuleHive, PathsThatNameNothing) {
    addRule("\\", "A");
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, openCode("A"));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, openCode("A\\"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, openCode(""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, openCode(nullptr));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, openCode("\\B"));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, openCode("\\A\\B"));
    EXPECT_LT(openCode("\\\\A"), 0);
    EXPECT_LT(openCode("\\A\\\\"), 0);
}

TEST_P(RuleHive, ClosingAfterAFailureReleasesTheHive) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = zxpol_openRuleHive(store(), 0, &error);
    ASSERT_NE(nullptr, hive);
    error = ZXPOL_E_PARSE;
    zxpol_closeRuleHive(hive, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

class RuleHiveOfAnotherType : public zxtest::StoreTest {};
ZXTEST_ON_BOTH_ENGINES(RuleHiveOfAnotherType);

TEST_P(RuleHiveOfAnotherType, IsRefusedAfterTheStoreWasStamped) {
    for (const int type : {1, -1, 1000}) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openRuleHive(store(), type, &error));
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    }
    EXPECT_TRUE(raw().subkeys().empty());
    EXPECT_EQ(0x01000000u, raw().number("version"));
}

}  // namespace
