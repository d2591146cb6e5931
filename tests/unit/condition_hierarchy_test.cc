#include "unit/rules_fixture.h"

namespace {

using namespace zxtest;
using Lines = std::vector<std::string>;

class ConditionHierarchy : public RulesTest {
protected:
    void SetUp() override {
        RulesTest::SetUp();
        int error = ZXPOL_S_OK;
        root.reset(hive().openRootRule(&error));
    }

    // Changes a rule's conditions with the hierarchy checked; the list of conflicts goes to `conflicts`.
    int add(ZxPolRule& rule, std::initializer_list<_ZxPolAddrPairCond> pairs) {
        int error = ZXPOL_S_OK;
        _ZxPolErrorCond** list = nullptr;
        rule.addCondition(CondList(pairs).get(), ZXPOL_COND_CHECK_HIERARCHY, &list, &error);
        return keep(list, error);
    }
    int remove(ZxPolRule& rule, std::initializer_list<_ZxPolAddrPairCond> pairs) {
        int error = ZXPOL_S_OK;
        _ZxPolErrorCond** list = nullptr;
        rule.deleteCondition(CondList(pairs).get(), ZXPOL_COND_CHECK_HIERARCHY, &list, &error);
        return keep(list, error);
    }
    int replace(ZxPolRule& rule, std::initializer_list<_ZxPolAddrPairCond> pairs) {
        int error = ZXPOL_S_OK;
        _ZxPolErrorCond** list = nullptr;
        rule.updateCondition(nullptr, CondList(pairs).get(), ZXPOL_COND_CHECK_HIERARCHY, &list, &error);
        return keep(list, error);
    }
    int keep(_ZxPolErrorCond** list, int error) {
        isListGiven = list != nullptr;
        conflicts = takeErrorList(list);
        return error;
    }

    std::unique_ptr<ZxPolRule> root;
    bool isListGiven = false;
    Lines conflicts;
};

TEST_F(ConditionHierarchy, EachSideIsCoveredByAPatternOrTrustedAsAList) {
    const ZxPolMailCondition conditions(nullptr);
    const auto isRelated = [&](const char* parentSender, const char* parentReceiver, const char* childSender,
                               const char* childReceiver) {
        const _ZxPolAddrPairCond parent = pairOf(parentSender, parentReceiver);
        const _ZxPolAddrPairCond child = pairOf(childSender, childReceiver);
        return conditions._checkAddrPairRelated(&parent, &child);
    };
    EXPECT_TRUE(isRelated("*", "*", "a@b", "c@d"));
    EXPECT_TRUE(isRelated("*@b", "*", "a@B", "c@d"));
    EXPECT_FALSE(isRelated("*@b", "*", "*", "c@d"));
    EXPECT_FALSE(isRelated("*", "*@b", "x@y", "c@d"));
    EXPECT_TRUE(isRelated("*@b", "*", "(list)", "c@d"));
    EXPECT_FALSE(isRelated("*@b", "*@b", "(list)", "c@d"));
    EXPECT_TRUE(isRelated("(list)", "(list)", "x@y", "*"));
    EXPECT_TRUE(isRelated("()", "*", "x@y", "*"));
    EXPECT_FALSE(isRelated("(", "*", "x@y", "*"));
    EXPECT_FALSE(isRelated("", "", "x@y", "*"));
}

TEST_F(ConditionHierarchy, TheCheckGivesCopiesOfWhatIsUncoveredInOrder) {
    replace(*root, {pairOf("*@a", "*"), pairOf("*@b", "*")});
    int error = ZXPOL_S_OK;
    unsigned char** failed = nullptr;
    ZxPolMailCondition conditions(nullptr);
    CondList asked({pairOf("x@c", "*"), pairOf("x@b", "*"), pairOf("y@c", "*")});
    EXPECT_FALSE(conditions.checkHierarchy(root.get(), asked.get(), &failed, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_NE(nullptr, failed);
    EXPECT_STREQ("x@c", zxpol::asPair(failed[0]).sender);
    EXPECT_STREQ("y@c", zxpol::asPair(failed[1]).sender);
    EXPECT_EQ(nullptr, failed[2]);
    zxpol::freeCondArray(failed);

    EXPECT_TRUE(conditions.checkHierarchy(root.get(), CondList({pairOf("x@a", "*")}).get(), &failed, &error));
    EXPECT_EQ(nullptr, failed);
    EXPECT_FALSE(conditions.checkHierarchy(root.get(), asked.get(), nullptr, &error));
    EXPECT_FALSE(conditions.checkHierarchy(root.get(), nullptr, &failed, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    raw("Rule\\Mail").setNumber("matchType", 1);
    EXPECT_FALSE(conditions.checkHierarchy(root.get(), asked.get(), &failed, &error));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    EXPECT_EQ(nullptr, failed);
}

TEST_F(ConditionHierarchy, AnUncoveredPairIsListedAndNothingIsWritten) {
    const auto child = addRule(*addRule(*root, "A", "*@a", "*"), "B", "x@a", "*");
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, add(*child, {pairOf("y@a", "*"), pairOf("y@b", "z@z")}));
    EXPECT_EQ((Lines{"\\A\\B: y@b,z@z"}), conflicts);
    EXPECT_EQ((Lines{"x@a,*"}), conditionsOf(*child));
    EXPECT_CODE(ZXPOL_S_OK, add(*child, {pairOf("y@a", "*")}));
    EXPECT_FALSE(isListGiven);
    EXPECT_EQ((Lines{"x@a,*", "y@a,*"}), conditionsOf(*child));
}

TEST_F(ConditionHierarchy, APairWithoutNulIsListedTerminated) {
    const auto child = addRule(*root, "A", "*@a", "*");
    const auto grandchild = addRule(*child, "B", "x@a", "*");
    _ZxPolAddrPairCond pair = pairOf("", "*");
    std::memset(pair.sender, 's', sizeof pair.sender);
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, add(*grandchild, {pair}));
    EXPECT_EQ((Lines{"\\A\\B: " + std::string(511, 's') + ",*"}), conflicts);
}

TEST_F(ConditionHierarchy, RemovingCoverRemovesWhatItCoveredAllTheWayDown) {
    const auto a = addRule(*root, "A", "*@a", "*");
    add(*a, {pairOf("*@b", "*")});
    const auto b = addRule(*a, "B", "x@a", "*");
    add(*b, {pairOf("x@b", "*")});
    const auto c = addRule(*b, "C", "x@a", "*");
    EXPECT_CODE(ZXPOL_S_OK, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_EQ((Lines{"\\A\\B: x@a,*", "\\A\\B\\C: x@a,*"}), conflicts);
    EXPECT_EQ((Lines{"x@b,*"}), conditionsOf(*b));
    EXPECT_EQ(Lines{}, conditionsOf(*c));
    EXPECT_CODE(ZXPOL_S_OK, remove(*a, {pairOf("*@b", "*")}));
    EXPECT_EQ((Lines{"\\A\\B: x@b,*"}), conflicts);
}

TEST_F(ConditionHierarchy, RemovingWhatNothingDependsOnGivesAnEmptyList) {
    const auto a = addRule(*root, "A", "*@a", "*");
    EXPECT_CODE(ZXPOL_S_OK, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_TRUE(isListGiven);
    EXPECT_EQ(Lines{}, conflicts);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_FALSE(isListGiven);
}

TEST_F(ConditionHierarchy, ReplacingIsCheckedUpwardsAndCleansUpDownwards) {
    const auto a = addRule(*root, "A", "*@a", "*");
    const auto b = addRule(*a, "B", "x@a", "*");
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, replace(*b, {pairOf("x@b", "*")}));
    EXPECT_EQ((Lines{"\\A\\B: x@b,*"}), conflicts);
    EXPECT_EQ((Lines{"x@a,*"}), conditionsOf(*b));
    EXPECT_CODE(ZXPOL_S_OK, replace(*a, {pairOf("*@b", "*")}));
    EXPECT_EQ((Lines{"\\A\\B: x@a,*"}), conflicts);
    EXPECT_EQ((Lines{"*@b,*"}), conditionsOf(*a));
    EXPECT_EQ(Lines{}, conditionsOf(*b));
}

TEST_F(ConditionHierarchy, ATextThatIsNoPairIsCleanedUpAsAnEmptyOne) {
    const auto a = addRule(*root, "A", "*@a", "*");
    const auto b = addRule(*a, "B", "x@a", "*");
    raw("Rule\\Mail\\rules\\A\\rules\\B").setText("condition2", "no comma");
    EXPECT_CODE(ZXPOL_S_OK, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_EQ((Lines{"\\A\\B: x@a,* ,"}), conflicts);
    EXPECT_EQ(Lines{}, conditionsOf(*b));
}

TEST_F(ConditionHierarchy, WithoutTheCheckNoOtherRuleIsLookedAt) {
    const auto a = addRule(*root, "A", "*@a", "*");
    const auto b = addRule(*a, "B", "x@a", "*");
    int error = ZXPOL_S_OK;
    b->addCondition(CondList({pairOf("x@b", "*")}).get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    a->deleteCondition(CondList({pairOf("*@a", "*")}).get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ((Lines{"x@a,*", "x@b,*"}), conditionsOf(*b));
}

TEST_F(ConditionHierarchy, ADescentThatFailsPutsBackWhatTheChildLost) {
    const auto a = addRule(*root, "A", "*@a", "*");
    const auto b = addRule(*a, "B", "x@a", "*");
    const auto c = addRule(*b, "C", "x@a", "*");
    raw("Rule\\Mail\\rules\\A\\rules\\B\\rules\\C").setNumber("matchType", 1);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_FALSE(isListGiven);
    EXPECT_EQ(Lines{}, conditionsOf(*a));
    EXPECT_EQ((Lines{"x@a,*"}), conditionsOf(*b));
}

TEST_F(ConditionHierarchy, AFailedDescentOfAReplacementListsOnlyWhatStayedRemoved) {
    const auto a = addRule(*root, "A", "*@a", "*");
    const auto first = addRule(*a, "First", "y@a", "*");
    const auto b = addRule(*a, "B", "x@a", "*");
    addRule(*b, "C", "x@a", "*");
    raw("Rule\\Mail\\rules\\A\\rules\\B\\rules\\C").setNumber("matchType", 1);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, replace(*a, {pairOf("*@b", "*")}));
    EXPECT_EQ((Lines{"\\A\\First: y@a,*"}), conflicts);
    EXPECT_EQ((Lines{"x@a,*"}), conditionsOf(*b));
}

TEST_F(ConditionHierarchy, TheRootIsNeverCheckedUpwards) {
    EXPECT_CODE(ZXPOL_S_OK, add(*root, {pairOf("x@y", "z@z")}));
    EXPECT_EQ((Lines{"*,*", "x@y,z@z"}), conditionsOf(*root));
}

TEST_F(ConditionHierarchy, ARuleWithoutAHiveCannotBeChecked) {
    const auto a = addRule(*root, "A", "*", "*");
    int error = ZXREG_S_OK;
    ZxPolRule alone(zxreg_openKey(store(), "Rule\\Mail\\rules\\A", &error), nullptr, "\\A");
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, add(alone, {pairOf("x@y", "*")}));
    EXPECT_FALSE(isListGiven);
}

TEST_F(ConditionHierarchy, DeepTreesAreCleanedUp) {
    constexpr int kDepth = 1000;
    const auto a = addRule(*root, "A", "*@a", "*");
    std::vector<std::unique_ptr<ZxPolRule>> below;
    below.push_back(addRule(*a, "r", "x@a", "*"));
    for (int depth = 1; depth < kDepth; ++depth)
        below.push_back(addRule(*below.back(), "r", "x@a", "*"));
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = taskAttr("t");
    delete a->createTask("t", &attr, &error);
    below.back()->inactivateTask("\\A\\t", &error, 0);
    a->deleteTask("t", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_TRUE(below.back()->isTaskActive("\\A\\t", &error, nullptr));
    EXPECT_CODE(ZXPOL_S_OK, remove(*a, {pairOf("*@a", "*")}));
    EXPECT_EQ(static_cast<size_t>(kDepth), conflicts.size());
    EXPECT_EQ(Lines{}, conditionsOf(*below.back()));
}

}  // namespace
