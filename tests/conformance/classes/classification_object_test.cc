// Classifications, actions and the reference checker as C++ programs use them: what no flat function shows.
#include <type_traits>

#include "classification/action.h"
#include "classification/class_hive.h"
#include "classification/classification.h"
#include "rules/ref_checker.h"
#include "support/policy_fixture.h"

namespace {

using zxtest::RawKey;
using Lines = std::vector<std::string>;

static_assert(std::is_base_of_v<ZxPolKeyEntity, ZxPolClassHive>, "");
static_assert(std::is_base_of_v<ZxPolKeyEntity, ZxPolClass>, "");
static_assert(!std::is_polymorphic_v<ZxPolClassHive> && !std::is_polymorphic_v<ZxPolClass>, "no virtual operations");
static_assert(!std::is_polymorphic_v<ZxPolAction> && sizeof(ZxPolAction) == sizeof(void*), "its key is its only field");

class ClassificationObject : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        int error = ZXPOL_S_OK;
        _hive.reset(ZxPolClassHive::open(store(), &error));
        ASSERT_NE(nullptr, _hive) << zxtest::codeText(error);
        const _ZxPolCommAttrib attr = {"shown", "words"};
        _owner.reset(hive().createClassification("C", &attr, &error));
        ASSERT_NE(nullptr, _owner) << zxtest::codeText(error);
    }
    void TearDown() override {
        _owner.reset();
        _hive.reset();
        PolicyTest::TearDown();
    }
    ZxPolClassHive& hive() const { return *_hive; }
    ZxPolClass& owner() const { return *_owner; }
    void closeHive() { _hive.reset(); }

    std::unique_ptr<ZxPolAction> addAction(const char* name, uint32_t order = 0) const {
        _ZxPolActionAttr attr = {};
        attr.order = order;
        int error = ZXPOL_S_OK;
        std::unique_ptr<ZxPolAction> made(owner().createAction(name, &attr, &error));
        EXPECT_NE(nullptr, made) << zxtest::codeText(error);
        return made;
    }
    std::string order() const { return orders("Classification\\C\\actions"); }

    _ZxPolComHandle* ruleKey() const {
        int error = ZXREG_S_OK;
        return zxreg_createKey(store(), "Rule", &error);
    }

private:
    std::unique_ptr<ZxPolClassHive> _hive;
    std::unique_ptr<ZxPolClass> _owner;
};
ZXTEST_ON_BOTH_ENGINES(ClassificationObject);

TEST_P(ClassificationObject, WithoutAResultNothingIsDone) {
    const std::unique_ptr<ZxPolAction> action = addAction("a");
    const _ZxPolCommAttrib changed = {"changed", "changed"};
    _ZxPolActionAttr changedAction = {"changed", "changed", 0, 9, nullptr};
    EXPECT_EQ(nullptr, ZxPolClassHive::open(store(), nullptr));
    EXPECT_EQ(nullptr, hive().createClassification("D", &changed, nullptr));
    EXPECT_EQ(nullptr, hive().createClassification("C", &changed, nullptr));
    EXPECT_EQ(nullptr, hive().openClassification("C", nullptr));
    hive().deleteClassification("C", nullptr);
    owner().setAttribute(&changed, nullptr);
    owner().setAttribute(nullptr, nullptr);
    EXPECT_EQ(nullptr, owner().createAction("b", &changedAction, nullptr));
    EXPECT_EQ(nullptr, owner().createAction("b", nullptr, nullptr));
    EXPECT_EQ(nullptr, owner().openAction("a", nullptr));
    EXPECT_EQ(0u, owner().setActionOrder("a", 1, nullptr));
    owner().deleteAction("a", nullptr);
    action->setAttribute(&changedAction, nullptr);
    action->setAttribute(nullptr, nullptr);
    EXPECT_EQ((Lines{"C"}), raw("Classification").subkeys());
    EXPECT_EQ("shown", raw("Classification\\C").text("displayName"));
    EXPECT_EQ("words", raw("Classification\\C").text("comment"));
    EXPECT_EQ("a1", order());
    EXPECT_EQ("", raw("Classification\\C\\actions\\a").text("displayName"));

    _ZxPolCommAttrib attr = {"kept", ""};
    owner().getAttribute(&attr, nullptr);
    owner().getAttribute(nullptr, nullptr);
    EXPECT_STREQ("kept", attr.displayName);
    _ZxPolActionAttr actionAttr = {"kept", "", 5, 6, nullptr};
    action->getAttribute(&actionAttr, nullptr);
    action->getAttribute(nullptr, nullptr);
    EXPECT_STREQ("kept", actionAttr.displayName);
    EXPECT_EQ(5u, actionAttr.order);
    EXPECT_EQ(nullptr, actionAttr.setting);
    char name[8] = "kept";
    uint32_t size = sizeof name;
    hive().enumClassification(0, name, &size, nullptr);
    owner().enumAction(0, name, &size, nullptr);
    EXPECT_STREQ("kept", name);
}

TEST_P(ClassificationObject, SuccessOverwritesAnEarlierFailure) {
    const auto action = addAction("a");
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_E_PARSE;
    hive().enumClassification(0, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    error = ZXPOL_E_PARSE;
    _ZxPolCommAttrib attr = {};
    owner().getAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    error = ZXPOL_E_PARSE;
    owner().setAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    error = ZXPOL_E_PARSE;
    const std::unique_ptr<ZxPolAction> opened(owner().openAction("a", &error));
    EXPECT_NE(nullptr, opened);
    EXPECT_CODE(ZXPOL_S_OK, error);
    error = ZXPOL_E_PARSE;
    EXPECT_EQ(1u, owner().setActionOrder("a", 7, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    error = ZXPOL_E_PARSE;
    const _ZxPolActionAttr actionAttr = {};
    action->setAttribute(&actionAttr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(ClassificationObject, ThePositionGivenComesBackInARecordToRead) {
    addAction("a");
    _ZxPolActionAttr attr = {};
    const _ZxPolActionAttr& readOnly = attr;
    int error = ZXPOL_S_OK;
    std::unique_ptr<ZxPolAction> made(owner().createAction("b", &readOnly, &error));
    EXPECT_NE(nullptr, made);
    EXPECT_EQ(2u, attr.order);
    attr.order = 1;
    made.reset(owner().createAction("c", &readOnly, &error));
    EXPECT_EQ("c1 a2 b3", order());
    EXPECT_EQ(1u, attr.order);
    attr.order = 9;
    made.reset(owner().createAction("d", &readOnly, &error));
    EXPECT_EQ(4u, attr.order);
    attr.order = 2;
    made.reset(owner().createAction("d", &readOnly, &error));
    EXPECT_EQ(2u, attr.order) << "an existing action has no position given";
    EXPECT_EQ("c1 a2 b3 d4", order());
}

// The generic reader of named objects begins with the display name, that of classifications with the comment.
TEST_P(ClassificationObject, TheGenericReaderReadsInTheOtherOrder) {
    raw("Classification\\C").removeValue("comment");
    _ZxPolCommAttrib attr = {};
    int error = ZXPOL_S_OK;
    owner().getCommonAttrib(&attr, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_STREQ("shown", attr.displayName);
    attr = {};
    owner().getAttribute(&attr, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_STREQ("", attr.displayName);
}

TEST_P(ClassificationObject, WhatItOpensOutlivesIt) {
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolClass> c(hive().openClassification("C", &error));
    closeHive();
    const _ZxPolActionAttr record = {};
    std::unique_ptr<ZxPolAction> action(c->createAction("a", &record, &error));
    ASSERT_NE(nullptr, action);
    _ZxPolCommAttrib attr = {};
    c->getAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("shown", attr.displayName);
}

TEST_P(ClassificationObject, AfterItsDeletionEveryUseFails) {
    const auto action = addAction("a");
    int error = ZXPOL_S_OK;
    hive().deleteClassification("C", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    _ZxPolCommAttrib attr = {};
    owner().getAttribute(&attr, &error);
    EXPECT_LT(error, 0);
    owner().setAttribute(&attr, &error);
    EXPECT_LT(error, 0);
    _ZxPolActionAttr actionAttr = {};
    action->getAttribute(&actionAttr, &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(nullptr, actionAttr.setting);
    EXPECT_EQ(nullptr, owner().openAction("a", &error));
    EXPECT_LT(error, 0);
    EXPECT_TRUE(raw("Classification").subkeys().empty());
}

// ---- the reference checker --------------------------------------------------------------------------------------

TEST_P(ClassificationObject, ACheckerReportsItsMakingWhereThatIsAsked) {
    int error = ZXPOL_E_PARSE;
    ZxPolRefChecker checker(ruleKey(), &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    ZxPolRefChecker silent(ruleKey(), nullptr);
    char path[8] = "kept";
    uint32_t size = sizeof path;
    error = ZXPOL_E_PARSE;
    EXPECT_FALSE(silent.checkReference(ZXPOL_REF_ADDRLIST, "x", path, &size, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("kept", path);
    EXPECT_EQ(8u, size);
}

TEST_P(ClassificationObject, ACheckerAnswersFromTheStoreEachTime) {
    int error = ZXPOL_S_OK;
    ZxPolRefChecker checker(ruleKey(), &error);
    const auto check = [&](ZxPolRefEntity entity) -> std::string {
        char path[8];
        uint32_t size = sizeof path;
        return checker.checkReference(entity, "x", path, &size, &error) ? path : "none";
    };
    EXPECT_EQ("none", check(ZXPOL_REF_ADDRLIST));
    addRule("\\", "A", "(x)");
    EXPECT_EQ("\\A", check(ZXPOL_REF_ADDRLIST));
    EXPECT_EQ("none", check(ZXPOL_REF_CLASSIFICATION));
    rawRule("\\A").setText("condition1", "*,*");
    EXPECT_EQ("none", check(ZXPOL_REF_ADDRLIST));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(ClassificationObject, ACheckerWithoutAResultAnswersNo) {
    addRule("\\", "A", "(x)");
    ZxPolRefChecker checker(ruleKey(), nullptr);
    char path[8] = "kept";
    uint32_t size = sizeof path;
    EXPECT_FALSE(checker.checkReference(ZXPOL_REF_ADDRLIST, "x", path, &size, nullptr));
    EXPECT_STREQ("kept", path);
    int error = ZXPOL_S_OK;
    for (int missing = 0; missing < 3; ++missing) {
        error = ZXPOL_S_OK;
        EXPECT_FALSE(checker.checkReference(ZXPOL_REF_ADDRLIST, missing == 0 ? nullptr : "x",
                                            missing == 1 ? nullptr : path, missing == 2 ? nullptr : &size, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    EXPECT_TRUE(checker.checkReference(ZXPOL_REF_ADDRLIST, "x", path, &size, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("\\A", path);
}

}  // namespace
