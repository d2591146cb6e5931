#include "unit/rules_fixture.h"

namespace {

using namespace zxtest;

class Rule : public RulesTest {
protected:
    void SetUp() override {
        RulesTest::SetUp();
        int error = ZXPOL_S_OK;
        root.reset(hive().openRootRule(&error));
    }
    std::unique_ptr<ZxPolRule> root;
};

TEST_F(Rule, AChildIsNamedByItsPathAndHasItsSubkeys) {
    const auto a = addRule(*root, "A", "*", "*");
    const auto b = addRule(*a, "B", "*", "*");
    EXPECT_EQ("\\A\\B", b->name());
    const RawKey key = raw("Rule\\Mail\\rules\\A\\rules\\B");
    EXPECT_EQ("B", key.text("displayName"));
    EXPECT_EQ("of B", key.text("comment"));
    EXPECT_EQ(0u, key.number("matchType"));
    EXPECT_EQ(1u, key.number("order"));
    EXPECT_EQ((std::vector<std::string>{"rules", "inactive", "tasks"}), key.subkeys());
}

TEST_F(Rule, ThePositionGivenIsWrittenBack) {
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr("A", 7);
    std::unique_ptr<ZxPolRule> child(root->createChildRule("A", &attr, &error));
    EXPECT_EQ(1u, attr.order);
    const _ZxPolRuleAttr& readOnly = attr;
    child.reset(root->createChildRule("B", &readOnly, &error));
    EXPECT_EQ(1u, attr.order) << "the position that was wished for";
    EXPECT_EQ(1u, raw("Rule\\Mail\\rules\\B").number("order"));
    EXPECT_EQ(2u, raw("Rule\\Mail\\rules\\A").number("order"));
    attr.order = 9;
    child.reset(root->createChildRule("C", &readOnly, &error));
    EXPECT_EQ(3u, attr.order) << "also in a record to read";
    attr.order = 2;
    child.reset(root->createChildRule("B", &attr, &error));
    EXPECT_EQ(2u, attr.order) << "an existing child keeps its position and the record its wish";
    EXPECT_EQ(1u, raw("Rule\\Mail\\rules\\B").number("order"));
}

TEST_F(Rule, BadRecordsCreateNothing) {
    _ZxPolRuleAttr negative = ruleAttr("A");
    negative.matchType = -1;
    _ZxPolRuleAttr overlong = ruleAttr("A");
    std::memset(overlong.displayName, 'd', sizeof overlong.displayName);
    _ZxPolRuleAttr endless = ruleAttr("A");
    std::memset(endless.comment, 'c', sizeof endless.comment);
    _ZxPolRuleAttr misplaced = ruleAttr("A", 0x80000000u);
    CondList conditions({pairOf("*", "*")});
    for (_ZxPolRuleAttr* attr : {&negative, &overlong, &endless, &misplaced, static_cast<_ZxPolRuleAttr*>(nullptr)}) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, root->createChildRule("A", attr, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, root->createChildRule("A", attr, conditions.get(), &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr("A");
    EXPECT_EQ(nullptr, root->createChildRule("", &attr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, root->createChildRule(nullptr, &attr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, root->createChildRule("A", &attr, nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, root->createChildRule("A", &attr, nullptr));
    EXPECT_FALSE(raw("Rule\\Mail\\rules").hasKey("A"));
}

TEST_F(Rule, AChildWhoseConditionsFailStays) {
    addRule(*root, "A", "*@a", "*");
    _ZxPolRuleAttr attr = ruleAttr("B", 5);
    CondList conditions({pairOf("x@b", "*")});
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, rule("\\A")->createChildRule("B", &attr, conditions.get(), &error));
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);
    EXPECT_EQ(1u, attr.order) << "the position that it has";
    EXPECT_EQ(std::vector<std::string>{}, conditionsOf(*rule("\\A\\B")));
}

TEST_F(Rule, SettingAttributesKeepsThePosition) {
    const auto a = addRule(*root, "A", "*", "*");
    _ZxPolRuleAttr attr = ruleAttr("other", 9);
    attr.matchType = 3;
    int error = ZXPOL_S_OK;
    a->setAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    _ZxPolRuleAttr read{};
    a->getAttribute(&read, &error);
    EXPECT_STREQ("other", read.displayName);
    EXPECT_STREQ("of other", read.comment);
    EXPECT_EQ(1u, read.order);
    EXPECT_EQ(3, read.matchType);
    attr.matchType = -1;
    setText(attr.displayName, "never");
    a->setAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("other", raw("Rule\\Mail\\rules\\A").text("displayName"));
}

TEST_F(Rule, AMissingCommentEndsReadingAndOtherFieldsDoNot) {
    const auto a = addRule(*root, "A", "*", "*");
    RawKey key = raw("Rule\\Mail\\rules\\A");
    key.setText("displayName", std::string(300, 'd'));
    key.removeValue("order");
    _ZxPolRuleAttr read = ruleAttr("before", 7);
    int error = ZXPOL_S_OK;
    a->getAttribute(&read, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("", read.displayName);
    EXPECT_EQ(7u, read.order);
    key.removeValue("comment");
    read = ruleAttr("before", 7);
    a->getAttribute(&read, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_STREQ("before", read.displayName);
    key.setText("comment", "back");
    key.removeValue("matchType");
    a->getAttribute(&read, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_STREQ("back", read.comment);
}

TEST_F(Rule, ConditionsNeedMatchTypeZero) {
    const auto a = addRule(*root, "A", "*", "*");
    RawKey key = raw("Rule\\Mail\\rules\\A");
    key.setNumber("matchType", 1);
    CondList list({pairOf("x@y", "*")});
    _ZxPolAddrPairCond pair{};
    uint32_t size = sizeof pair;
    int error = ZXPOL_S_OK;
    a->enumCondition(0, reinterpret_cast<unsigned char*>(&pair), &size, &error);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    a->addCondition(list.get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    a->deleteCondition(list.get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    a->updateCondition(nullptr, list.get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    key.removeValue("matchType");
    a->addCondition(list.get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_EQ("*,*", key.text("condition1"));
}

TEST_F(Rule, WithoutAListOfConditionsTheErrorListIsStillEmptied) {
    int error = ZXPOL_S_OK;
    _ZxPolErrorCond* none = nullptr;
    _ZxPolErrorCond** list = &none;
    root->addCondition(nullptr, ZXPOL_COND_CHECK_NONE, &list, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, list);
}

TEST_F(Rule, MarksAreLoadedOnceAndOnlyThroughAHive) {
    int error = ZXPOL_S_OK;
    root->inactivateTask("\\t", &error, 0);
    EXPECT_TRUE(root->inactiveTasks().empty());
    const auto again = rule("\\");
    ASSERT_EQ(1u, again->inactiveTasks().size());
    EXPECT_EQ("\\t", again->inactiveTasks().front());
    again->cleanInactiveTasks();
    EXPECT_TRUE(again->inactiveTasks().empty());
    again->loadInactiveTasks();
    EXPECT_EQ(1u, again->inactiveTasks().size());
    ZxPolRule alone(zxreg_openKey(store(), "Rule\\Mail", &error), nullptr, "");
    EXPECT_TRUE(alone.inactiveTasks().empty());
}

}  // namespace
