// What every flat function shares: the result argument, the checks of handles, closing, the store's version.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;

class Frame : public zxtest::PolicyTest {};
ZXTEST_ON_BOTH_ENGINES(Frame);

TEST_P(Frame, AFailureAlreadyHeldMakesACallANoOp) {
    int error = ZXPOL_E_PARSE;
    EXPECT_EQ(nullptr, zxpol_openRootRule(ruleHive(), &error));
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    zxpol_setExclusiveFilterType(ruleHive(), 1, ZXPOL_FILTER_ASC_EXCLUSIVE, &error);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    EXPECT_TRUE(raw("Rule").valueNames().empty());
    EXPECT_EQ(0u, zxpol_getVersion(store(), &error));
    EXPECT_EQ(0, zxpol_isTaskActive(rule().get(), "\\t", &error));
    EXPECT_CODE(ZXPOL_E_PARSE, error);
}

TEST_P(Frame, AForeignFailureIsAFailureToo) {
    int error = static_cast<int>(0x80000000u);
    EXPECT_EQ(nullptr, zxpol_openRootRule(ruleHive(), &error));
    EXPECT_CODE(static_cast<int>(0x80000000u), error);
}

TEST_P(Frame, AnyCodeThatIsNoFailureLetsTheCallRun) {
    int error = 7;
    const Handle root(zxpol_openRootRule(ruleHive(), &error));
    EXPECT_NE(nullptr, root);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(Frame, ANullResultMakesACallANoOp) {
    EXPECT_EQ(nullptr, zxpol_openRootRule(ruleHive(), nullptr));
    EXPECT_EQ(nullptr, zxpol_openRuleHive(store(), 0, nullptr));
    EXPECT_EQ(0u, zxpol_getVersion(store(), nullptr));
    zxpol_setExclusiveFilterType(ruleHive(), 1, ZXPOL_FILTER_ASC_EXCLUSIVE, nullptr);
    EXPECT_TRUE(raw("Rule").valueNames().empty());
    zxpol_closeRuleHive(ruleHive(), nullptr);
    const Handle root = rule();  // the hive is still open
    EXPECT_NE(nullptr, root);
}

TEST_P(Frame, ClosingWorksAfterAFailureAndReportsSuccess) {
    Handle root = rule();
    int error = ZXPOL_E_PARSE;
    zxpol_closeRule(root.release(), &error);
    EXPECT_CODE(ZXPOL_S_OK, error);

    error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = zxtest::taskAttr("t");
    _ZxPolComHandle* task = zxpol_createTask(rule().get(), "t", &attr, &error);
    ASSERT_NE(nullptr, task);
    error = ZXPOL_E_NOT_FOUND;
    zxpol_closeTask(task, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(Frame, ANullHandleIsAnInvalidArgument) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRootRule(nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleHive(nullptr, 0, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_closeRuleHive(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(0u, zxpol_getVersion(nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(Frame, AHandleOfAnotherKindIsAWrongHandle) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openAddrList(ruleHive(), "a", &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleHive(listHive(), 0, &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(0u, zxpol_getVersion(ruleHive(), &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
}

TEST_P(Frame, AHandleWithoutAnObjectIsAWrongHandle) {
    _ZxPolComHandle hollow = {ZXPOL_HANDLE_RULE_HIVE, nullptr};
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRootRule(&hollow, &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
}

TEST_P(Frame, TheKindIsLookedAtBeforeTheArguments) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleByFullName(listHive(), nullptr, &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
}

TEST_P(Frame, ClosingWithTheWrongKindFreesNothing) {
    const Handle root = rule();
    int error = ZXPOL_S_OK;
    zxpol_closeTask(root.get(), &error);
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    zxpol_closeAddrListHive(ruleHive(), &error);
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = {};
    zxpol_getRuleAttrib(root.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_NE(nullptr, rule());
}

TEST_P(Frame, ObjectsOutliveTheHiveThatOpenedThem) {
    addRule("\\", "A");
    const Handle a = rule("\\A");
    closeHives();
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = {};
    zxpol_getRuleAttrib(a.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("A", attr.displayName);
    // A check against the parent rule goes by the path from the hive.
    const zxtest::Conditions conditions{{"a@b.c", "*"}};
    zxpol_addConditionEx(a.get(), conditions.list(), ZXPOL_COND_CHECK_HIERARCHY, nullptr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(Frame, TwoHandlesToOneRuleAreIndependent) {
    const Handle first = rule();
    Handle second = rule();
    EXPECT_NE(first.get(), second.get());
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = {};
    zxtest::setField(attr.displayName, "changed");
    zxpol_setRuleAttrib(second.get(), &attr, &error);
    second.reset();
    zxpol_getRuleAttrib(first.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("changed", attr.displayName);
}

TEST(ResultCodes, OnlyTheSignTellsFailure) {
    EXPECT_TRUE(ZX_SUCCESS(ZXPOL_S_OK));
    EXPECT_TRUE(ZX_SUCCESS(0));
    EXPECT_TRUE(ZX_SUCCESS(0x7fffffff));
    EXPECT_FALSE(ZX_SUCCESS(-1));
    EXPECT_FALSE(ZX_FAILURE(ZXPOL_S_OK));
    EXPECT_FALSE(ZX_FAILURE(0));
    EXPECT_TRUE(ZX_FAILURE(ZXPOL_E_NO_MORE_ITEMS));
    EXPECT_TRUE(ZX_FAILURE(static_cast<int>(0x80000000u)));
}

TEST(Handles, AreMadeOfTheirKindAndObject) {
    int object = 0;
    _ZxPolComHandle* handle = makeHandle(&object, 0x122);
    ASSERT_NE(nullptr, handle);
    EXPECT_EQ(0x122u, handle->kind);
    EXPECT_EQ(&object, handle->object);
    delete handle;
}

TEST(LibraryVersion, IsWrittenToThePointersThatAreGiven) {
    unsigned major = 9, minor = 9, patch = 9, build = 9;
    libzxpolicy(&major, &minor, &patch, &build);
    EXPECT_EQ(1u, major);
    EXPECT_EQ(2u, minor);
    EXPECT_EQ(0u, patch);
    EXPECT_EQ(1229u, build);
    minor = build = 9;
    libzxpolicy(nullptr, &minor, nullptr, &build);
    EXPECT_EQ(2u, minor);
    EXPECT_EQ(1229u, build);
    libzxpolicy(nullptr, nullptr, nullptr, nullptr);
}

}  // namespace
