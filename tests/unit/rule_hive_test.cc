#include "unit/rules_fixture.h"

namespace {

using namespace zxtest;
using RuleHive = RulesTest;

std::string keyPathOf(const ZxPolRuleHive& hive, const char* path) {
    std::string keyPath;
    return hive.transRulePathToKeyPath(path, keyPath) ? keyPath : "refused";
}

TEST_F(RuleHive, RulePathsBecomeKeyPathsBelowTheRoot) {
    EXPECT_EQ("Mail", keyPathOf(hive(), "\\"));
    EXPECT_EQ("Mail\\rules\\A", keyPathOf(hive(), "\\A"));
    EXPECT_EQ("Mail\\rules\\A\\rules\\B", keyPathOf(hive(), "\\A\\B"));
    EXPECT_EQ("Mail\\rules\\A\\rules\\B\\", keyPathOf(hive(), "\\A\\B\\"));
    EXPECT_EQ("Mail\\rules\\A\\rules\\\\rules\\B", keyPathOf(hive(), "\\A\\\\B"));
    EXPECT_EQ("refused", keyPathOf(hive(), "A"));
    EXPECT_EQ("refused", keyPathOf(hive(), ""));
    EXPECT_EQ("refused", keyPathOf(hive(), nullptr));
}

TEST_F(RuleHive, AnotherLayoutPutsTheRootAtTheHiveItself) {
    int error = ZXREG_S_OK;
    ZxPolRuleHive other(zxreg_createKey(store(), "Other", &error), 1);
    EXPECT_EQ("", keyPathOf(other, "\\"));
    EXPECT_EQ("\\rules\\A", keyPathOf(other, "\\A"));
    other.createRootRule(&error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("*,*", raw("Other").text("condition1"));
}

TEST_F(RuleHive, ExclusiveFilterNamesAreThePrefixAndEightHexadecimalDigits) {
    EXPECT_TRUE(ZxPolRuleHive::_isNameValid("ExcluId0000001a"));
    EXPECT_TRUE(ZxPolRuleHive::_isNameValid("EXCLUid0000001A"));
    EXPECT_TRUE(ZxPolRuleHive::_isNameValid("ExcluIdffffffff"));
    for (const char* name : {"", "ExcluId", "ExcluId1234567", "ExcluId123456789", "ExcluId1234567g", "Exclud00000000",
                             "ExcluId 0000001", "ExcluId-0000001", "xExcluId00000001"})
        EXPECT_FALSE(ZxPolRuleHive::_isNameValid(name)) << name;
    EXPECT_FALSE(ZxPolRuleHive::_isNameValid(nullptr));
}

TEST_F(RuleHive, OtherValuesOfTheKeyDoNotShiftTheExclusiveFilters) {
    RawKey key = raw("Rule");
    key.setText("Another", "text");
    key.setNumber("ExcluID0000000A", 1);
    key.setNumber("ExcluId1234567", 0);
    int error = ZXPOL_S_OK;
    hive().setExclusiveFilterType(0xffffffffu, ZXPOL_FILTER_ASC_EXCLUSIVE, &error);
    EXPECT_EQ(0u, key.number("ExcluIdffffffff"));

    uint32_t filter = 7;
    ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
    hive().enumExclusiveFilterType(0, &filter, &type, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(10u, filter);
    EXPECT_EQ(ZXPOL_FILTER_DESC_EXCLUSIVE, type);
    hive().enumExclusiveFilterType(1, &filter, &type, &error);
    EXPECT_EQ(0xffffffffu, filter);
    EXPECT_EQ(ZXPOL_FILTER_ASC_EXCLUSIVE, type);
    hive().enumExclusiveFilterType(2, &filter, &type, &error);
    EXPECT_EQ(12u, reasonOf(error));
    EXPECT_EQ(0xffffffffu, filter);
}

TEST_F(RuleHive, ANewRootHasEverythingThatARuleHas) {
    const RawKey root = raw("Rule\\Mail");
    EXPECT_EQ("", root.text("displayName"));
    EXPECT_EQ("", root.text("comment"));
    EXPECT_EQ(0u, root.number("matchType"));
    EXPECT_EQ(1u, root.number("order"));
    EXPECT_EQ("*,*", root.text("condition1"));
    EXPECT_EQ((std::vector<std::string>{"rules", "inactive", "tasks"}), root.subkeys());
}

TEST_F(RuleHive, ARootWithoutConditionsGetsItsConditionBackAndKeepsTheRest) {
    RawKey root = raw("Rule\\Mail");
    root.setText("displayName", "mine");
    root.removeValue("condition1");
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRuleHive> again(ZxPolRuleHive::open(store(), 0, &error));
    ASSERT_NE(nullptr, again);
    EXPECT_EQ("*,*", root.text("condition1"));
    EXPECT_EQ("mine", root.text("displayName"));
}

TEST_F(RuleHive, ARootWithUnreadableAttributesIsTakenForANewOne) {
    RawKey root = raw("Rule\\Mail");
    root.setText("comment", std::string(600, 'c'));
    root.setText("displayName", "mine");
    root.setText("condition1", "a@b,*");
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRuleHive> again(ZxPolRuleHive::open(store(), 0, &error));
    ASSERT_NE(nullptr, again) << codeText(error);
    EXPECT_EQ("", root.text("comment"));
    EXPECT_EQ("", root.text("displayName"));
    EXPECT_EQ("a@b,*", root.text("condition1"));
}

TEST_F(RuleHive, ConditionsThatCannotBeReadAreNotTakenForMissing) {
    RawKey root = raw("Rule\\Mail");
    root.setNumber("condition1", 1);
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRuleHive> again(ZxPolRuleHive::open(store(), 0, &error));
    ASSERT_NE(nullptr, again) << codeText(error);
    EXPECT_EQ(1u, root.number("condition1"));
    EXPECT_EQ(std::nullopt, root.bytes("condition2"));
}

TEST_F(RuleHive, ARootOfAnotherMatchTypeIsLeftAlone) {
    RawKey root = raw("Rule\\Mail");
    root.setNumber("matchType", 1);
    root.removeValue("condition1");
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRuleHive> again(ZxPolRuleHive::open(store(), 0, &error));
    ASSERT_NE(nullptr, again) << codeText(error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::nullopt, root.bytes("condition1"));
}

TEST_F(RuleHive, ATrailingBackslashIsNotPartOfTheName) {
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRule> root(hive().openRootRule(&error));
    addRule(*addRule(*root, "A", "*", "*"), "B", "*", "*");
    EXPECT_EQ("", root->name());
    EXPECT_EQ("", rule("\\")->name());
    EXPECT_EQ("\\A", rule("\\A\\")->name());
    EXPECT_EQ("\\A\\B", rule("\\A\\B")->name());
}

TEST_F(RuleHive, PathsThatNameNoRuleAreRefused) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, hive().openRuleByFullPath(nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, hive().openRuleByFullPath("", &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, hive().openRuleByFullPath("A", &error));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    EXPECT_EQ(nullptr, hive().openRuleByFullPath("\\A", &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_EQ(nullptr, hive().openRuleByFullPath("\\", nullptr));
}

TEST_F(RuleHive, ARuleIsCheckedAgainstItsParentAlsoAfterTheHiveIsGone) {
    int error = ZXPOL_S_OK;
    std::unique_ptr<ZxPolRule> root(hive().openRootRule(&error));
    const std::unique_ptr<ZxPolRule> child = addRule(*addRule(*root, "A", "*@a.example", "*"), "B", "x@a.example", "*");
    root.reset();
    closeHive();
    CondList covered({pairOf("y@a.example", "*")});
    child->addCondition(covered.get(), ZXPOL_COND_CHECK_HIERARCHY, nullptr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    CondList uncovered({pairOf("y@b.example", "*")});
    child->addCondition(uncovered.get(), ZXPOL_COND_CHECK_HIERARCHY, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);
}

}  // namespace
