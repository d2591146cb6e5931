// Child rules and the attributes of rules.
#include "support/policy_fixture.h"

namespace {

using zxtest::Conditions;
using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class Rules : public zxtest::PolicyTest {
protected:
    // Creates a child of `parent`; returns the code. The rule must come with a success only.
    int create(const char* parent, const char* name, const _ZxPolRuleAttr& wanted, const Conditions& conditions) {
        _ZxPolRuleAttr attr = wanted;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createRule(rule(parent).get(), name, &attr, conditions.list(), &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    static _ZxPolRuleAttr attributes(const char* displayName, const char* comment, int32_t matchType = 0) {
        _ZxPolRuleAttr attr = {};
        zxtest::setField(attr.displayName, displayName);
        zxtest::setField(attr.comment, comment);
        attr.matchType = matchType;
        return attr;
    }
    int read(const char* path, _ZxPolRuleAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getRuleAttrib(rule(path).get(), attr, &error);
        return error;
    }
    int write(const char* path, const _ZxPolRuleAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_setRuleAttrib(rule(path).get(), attr, &error);
        return error;
    }
    const Conditions any{{"*", "*"}};
};
ZXTEST_ON_BOTH_ENGINES(Rules);

TEST_P(Rules, ANewRuleHasItsValuesAndSubkeys) {
    addRule("\\", "A");
    EXPECT_CODE(ZXPOL_S_OK, create("\\A", "B", attributes("shown", "words"), Conditions{{"a@b.c", "*"}}));
    const RawKey b = raw("Rule\\Mail\\rules\\A\\rules\\B");
    EXPECT_EQ("shown", b.text("displayName"));
    EXPECT_EQ("words", b.text("comment"));
    EXPECT_EQ(0u, b.number("matchType"));
    EXPECT_EQ(1u, b.number("order"));
    EXPECT_EQ("a@b.c,*", b.text("condition1"));
    EXPECT_EQ(5u, b.valueNames().size());
    EXPECT_EQ((Lines{"rules", "inactive", "tasks"}), b.subkeys());
    EXPECT_NE(nullptr, rule("\\A\\B"));
}

TEST_P(Rules, CreatingAnExistingRuleChangesItsAttributesAndAddsTheConditions) {
    addRule("\\", "A", "a@b.c");
    addRule("\\", "B");
    _ZxPolRuleAttr changed = attributes("new", "words");
    changed.order = 2;
    EXPECT_CODE(ZXPOL_S_OK, create("\\", "A", changed, Conditions{{"A@B.c", "*"}, {"d@e.f", "*"}}));
    EXPECT_EQ("new", rawRule("\\A").text("displayName"));
    EXPECT_EQ((Lines{"a@b.c -> *", "d@e.f -> *"}), conditionsOf("\\A"));
    EXPECT_EQ("A1 B2", orders("Rule\\Mail\\rules"));
}

TEST_P(Rules, ANegativeMatchTypeIsRefusedAndNothingIsWritten) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("\\", "A", attributes("x", "", -1), any));
    EXPECT_TRUE(raw("Rule\\Mail\\rules").subkeys().empty());
    addRule("\\", "B");
    const _ZxPolRuleAttr attr = attributes("changed", "changed", -1);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, write("\\B", &attr));
    EXPECT_EQ("B", rawRule("\\B").text("displayName"));
    EXPECT_EQ("", rawRule("\\B").text("comment"));
}

TEST_P(Rules, MissingArgumentsAreRefusedAndNothingIsWritten) {
    _ZxPolRuleAttr attr = {};
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createRule(rule().get(), "A", &attr, nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createRule(rule().get(), "A", nullptr, any.list(), &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createRule(rule().get(), name, &attr, any.list(), &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openRule(rule().get(), name, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        zxpol_deleteRule(rule().get(), name, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        zxpol_setRuleOrder(rule().get(), name, 1, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    EXPECT_TRUE(raw("Rule\\Mail\\rules").subkeys().empty());
}

TEST_P(Rules, AnUncoveredConditionFailsTheCreationButTheRuleStays) {
    addRule("\\", "A", "*@partner.example");
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, create("\\A", "B", attributes("stays", ""), any));
    EXPECT_EQ("stays", rawRule("\\A\\B").text("displayName"));
    EXPECT_EQ((Lines{"rules", "inactive", "tasks"}), rawRule("\\A\\B").subkeys());
    EXPECT_TRUE(conditionsOf("\\A\\B").empty());
}

TEST_P(Rules, AMalformedConditionFailsTheCreationButTheOthersAreWritten) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT,
                create("\\", "A", attributes("A", ""), Conditions{{"a@b.c", "*"}, {"bad", "*"}, {"d@e.f", "*"}}));
    EXPECT_EQ((Lines{"a@b.c -> *", "d@e.f -> *"}), conditionsOf("\\A"));
}

TEST_P(Rules, AnotherMatchTypeIsWrittenButItsConditionsAreNotSupported) {
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, create("\\", "A", attributes("A", "", 2), any));
    EXPECT_EQ(2u, rawRule("\\A").number("matchType"));
    EXPECT_EQ(std::nullopt, rawRule("\\A").text("condition1"));
}

TEST_P(Rules, WritingAttributesNeverMovesTheRule) {
    addRule("\\", "A");
    addRule("\\", "B");
    _ZxPolRuleAttr attr = attributes("changed", "words", 5);
    attr.order = 2;
    EXPECT_CODE(ZXPOL_S_OK, write("\\A", &attr));
    EXPECT_EQ("A1 B2", orders("Rule\\Mail\\rules"));
    attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read("\\A", &attr));
    EXPECT_STREQ("changed", attr.displayName);
    EXPECT_STREQ("words", attr.comment);
    EXPECT_EQ(1u, attr.order);
    EXPECT_EQ(5, attr.matchType);
}

TEST_P(Rules, ATextWithoutItsNulIsRefused) {
    _ZxPolRuleAttr attr = attributes("", "");
    std::memset(attr.comment, 'c', sizeof attr.comment);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, write("\\", &attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("\\", "A", attr, any));
    EXPECT_EQ("", rawRule().text("comment"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, write("\\", nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, read("\\", nullptr));
}

TEST_P(Rules, TheLongestTextsAreKept) {
    const std::string name(255, 'n'), comment(511, 'c');
    const _ZxPolRuleAttr attr = attributes(name.c_str(), comment.c_str());
    EXPECT_CODE(ZXPOL_S_OK, write("\\", &attr));
    _ZxPolRuleAttr found = {};
    EXPECT_CODE(ZXPOL_S_OK, read("\\", &found));
    EXPECT_EQ(name, found.displayName);
    EXPECT_EQ(comment, found.comment);
}

TEST_P(Rules, WithoutACommentNothingElseIsRead) {
    addRule("\\", "A");
    rawRule("\\A").removeValue("comment");
    _ZxPolRuleAttr attr = attributes("kept", "");
    attr.order = 77;
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read("\\A", &attr));
    EXPECT_STREQ("kept", attr.displayName);
    EXPECT_EQ(77u, attr.order);
}

TEST_P(Rules, AfterTheCommentOnlyTheLastReadingCounts) {
    addRule("\\", "A");
    rawRule("\\A").setText("comment", "words");
    rawRule("\\A").removeValue("displayName");
    rawRule("\\A").removeValue("order");
    _ZxPolRuleAttr attr = {};
    attr.matchType = 9;
    EXPECT_CODE(ZXPOL_S_OK, read("\\A", &attr));
    EXPECT_STREQ("words", attr.comment);
    EXPECT_EQ(0, attr.matchType);
    rawRule("\\A").setText("displayName", "shown");
    rawRule("\\A").setNumber("order", 3);
    rawRule("\\A").removeValue("matchType");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read("\\A", &attr));
    EXPECT_STREQ("shown", attr.displayName);
    EXPECT_EQ(3u, attr.order);
}

TEST_P(Rules, ChildrenAreEnumeratedByTheirOwnNamesInOrder) {
    addRule("\\", "A");
    addRule("\\", "B");
    addRule("\\", "C");
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(rule().get(), "C", 1, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("C A B", names(zxpol_enumRule, rule().get()));
    addRule("\\A", "D");
    EXPECT_EQ("D", names(zxpol_enumRule, rule("\\A").get()));
}

TEST_P(Rules, ARuleWithoutChildrenEndsAtOnce) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumRule(rule().get(), 0, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
}

TEST_P(Rules, OpeningAChildGivesItItsFullPath) {
    addRule("\\", "A");
    addRule("\\A", "B", "a@b.c");
    int error = ZXPOL_S_OK;
    const Handle a(zxpol_openRule(rule().get(), "A", &error));
    const Handle b(zxpol_openRule(a.get(), "B", &error));
    ASSERT_NE(nullptr, b);
    rawRule("\\A").setText("condition1", "x@y.z,*");
    _ZxPolErrorCond** list = nullptr;
    zxpol_addConditionEx(b.get(), any.list(), ZXPOL_COND_CHECK_HIERARCHY, &list, &error);
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);
    ASSERT_NE(nullptr, list);
    EXPECT_STREQ("\\A\\B", list[0]->ruleName);
    zxpol_freeErrorConds(list, &error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRule(a.get(), "C", &error));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
}

TEST_P(Rules, DeletingARuleLeavesMarksForItsTasksElsewhere) {
    addRule("\\", "A");
    addTask("\\A", "t");
    inactivate("\\", "\\A\\t");
    int error = ZXPOL_S_OK;
    zxpol_deleteRule(rule().get(), "A", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("\\A\\t", raw("Rule\\Mail\\inactive").text("inactive1"));
}

}  // namespace
