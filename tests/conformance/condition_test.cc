// The conditions of one rule: their text in the store, adding, removing and enumerating them.
#include "support/policy_fixture.h"

namespace {

using zxtest::Conditions;
using zxtest::DebugMessages;
using zxtest::Handle;
using Lines = std::vector<std::string>;

class RuleConditions : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        addRule("\\", "A", "a@b.c");
    }
    int add(const std::string& sender, const std::string& receiver) { return addCondition("\\A", sender, receiver); }
    int addAll(const Conditions& conditions) {
        int error = ZXPOL_S_OK;
        zxpol_addConditionEx(rule("\\A").get(), conditions.list(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
        return error;
    }
    int remove(const std::string& sender, const std::string& receiver) {
        const _ZxPolAddrPairCond pair = zxtest::pairOf(sender, receiver);
        int error = ZXPOL_S_OK;
        zxpol_removeCondition(rule("\\A").get(), zxtest::asCondition(pair), &error);
        return error;
    }
    static int enumerate(_ZxPolComHandle* rule, uint32_t index, _ZxPolAddrPairCond* pair, uint32_t* size) {
        int error = ZXPOL_S_OK;
        zxpol_enumCondition(rule, index, reinterpret_cast<unsigned char*>(pair), size, &error);
        return error;
    }
    static int enumerate(_ZxPolComHandle* rule, uint32_t index, _ZxPolAddrPairCond* pair) {
        uint32_t size = sizeof *pair;
        return enumerate(rule, index, pair, &size);
    }
    Lines conditions() { return conditionsOf("\\A"); }
    zxtest::RawKey key() { return rawRule("\\A"); }
};
ZXTEST_ON_BOTH_ENGINES(RuleConditions);

TEST_P(RuleConditions, AreStoredAsSenderCommaReceiver) {
    EXPECT_CODE(ZXPOL_S_OK, add("*@d.e", "\"x,y\"@z"));
    EXPECT_EQ("a@b.c,*", key().text("condition1"));
    EXPECT_EQ("*@d.e,\"x,y\"@z", key().text("condition2"));
    EXPECT_EQ((Lines{"a@b.c -> *", "*@d.e -> \"x,y\"@z"}), conditions());
}

TEST_P(RuleConditions, BlanksNextToTheCommaAreNotRead) {
    key().setText("condition1", "  abc  ,  *  ");
    key().setText("condition2", "a,b,c");
    key().setText("condition3", "   ,x");
    key().setText("condition4", "y,");
    EXPECT_EQ((Lines{"  abc -> *  ", "a -> b,c", " -> x", "y -> "}), conditions());
}

TEST_P(RuleConditions, ATextWithoutACommaIsASuccessThatWritesNothing) {
    key().setText("condition1", "no comma");
    _ZxPolAddrPairCond pair = zxtest::pairOf("kept", "as it was");
    EXPECT_CODE(ZXPOL_S_OK, enumerate(rule("\\A").get(), 0, &pair));
    EXPECT_STREQ("kept", pair.sender);
    EXPECT_STREQ("as it was", pair.receiver);
}

TEST_P(RuleConditions, AStoredSideThatIsTooLongGivesTwoEmptySides) {
    key().setText("condition1", std::string(512, 's') + ",*");
    key().setText("condition2", "*," + std::string(512, 'r'));
    key().setText("condition3", std::string(511, 's') + "," + std::string(511, 'r'));
    EXPECT_EQ((Lines{" -> ", " -> ", std::string(511, 's') + " -> " + std::string(511, 'r')}), conditions());
}

TEST_P(RuleConditions, AStoredTextOf1024CharactersCanNeverBeEnumerated) {
    key().setText("condition1", "*," + std::string(1021, ' '));
    _ZxPolAddrPairCond pair = {};
    EXPECT_CODE(ZXPOL_S_OK, enumerate(rule("\\A").get(), 0, &pair));
    key().setText("condition1", "*," + std::string(1022, ' '));
    uint32_t size = 4096;
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, enumerate(rule("\\A").get(), 0, &pair, &size));
    EXPECT_EQ(1024u, size);
}

TEST_P(RuleConditions, AStoredTextOver2048BytesEndsTheReading) {
    key().setText("condition2", std::string(3000, ' '));
    _ZxPolAddrPairCond pair = {};
    EXPECT_EQ(6u, zxtest::reasonOf(enumerate(rule("\\A").get(), 0, &pair)));
}

TEST_P(RuleConditions, ARecordBelow1024BytesIsTooSmall) {
    _ZxPolAddrPairCond pair = {};
    uint32_t size = 1023;
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, enumerate(rule("\\A").get(), 0, &pair, &size));
    EXPECT_EQ(1024u, size);
    EXPECT_CODE(ZXPOL_S_OK, enumerate(rule("\\A").get(), 0, &pair, &size));
    EXPECT_STREQ("a@b.c", pair.sender);
    size = 0;
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(rule("\\A").get(), 1, &pair, &size));  // the end comes first
}

TEST_P(RuleConditions, NullOutputsAreRefused) {
    _ZxPolAddrPairCond pair = {};
    uint32_t size = sizeof pair;
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, enumerate(rule("\\A").get(), 0, nullptr, &size));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, enumerate(rule("\\A").get(), 0, &pair, nullptr));
}

TEST_P(RuleConditions, OnlyIndexZeroReadsTheStoreAgain) {
    add("d@e.f", "*");
    const Handle a = rule("\\A");
    _ZxPolAddrPairCond pair = {};
    EXPECT_CODE(ZXPOL_S_OK, enumerate(a.get(), 1, &pair));  // nothing was read yet
    EXPECT_STREQ("d@e.f", pair.sender);
    add("g@h.i", "*");
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, enumerate(a.get(), 2, &pair));
    EXPECT_CODE(ZXPOL_S_OK, enumerate(a.get(), 0, &pair));
    EXPECT_CODE(ZXPOL_S_OK, enumerate(a.get(), 2, &pair));
    EXPECT_STREQ("g@h.i", pair.sender);
}

TEST_P(RuleConditions, AValueThatIsNoStringSpoilsTheWholeEnumeration) {
    key().setNumber("condition2", 5);
    const Handle a = rule("\\A");
    _ZxPolAddrPairCond pair = {};
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, enumerate(a.get(), 0, &pair));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, enumerate(a.get(), 1, &pair));
}

TEST_P(RuleConditions, WhatCannotBeComparedIsNeitherAddedNorFound) {
    key().setNumber("condition2", 5);
    EXPECT_CODE(ZXPOL_S_OK, add("d@e.f", "*"));  // passed over without a word
    EXPECT_FALSE(key().bytes("condition3"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("a@b.c", "*"));
    EXPECT_EQ("a@b.c,*", key().text("condition1"));
}

TEST_P(RuleConditions, ListReferencesNeedBothParenthesesAndAName) {
    for (const char* side : {"()", "(list1", "(", ")", "", "x", "list1)", "jo*@b.c", "@", "a b@c"}) {
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, add(side, "*")) << side;
        EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, add("*", side)) << side;
    }
    EXPECT_CODE(ZXPOL_S_OK, add("(list1)", "(no pattern test, none)"));
    EXPECT_EQ((Lines{"a@b.c -> *", "(list1) -> (no pattern test, none)"}), conditions());
}

TEST_P(RuleConditions, SidesAreTrimmedBeforeTheyAreWritten) {
    EXPECT_CODE(ZXPOL_S_OK, add(" \td@e.f\n", "\n(list) "));
    EXPECT_EQ("d@e.f,(list)", key().text("condition2"));
}

TEST_P(RuleConditions, AddingOneThatIsThereIsLoggedAndWritesNothing) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_S_OK, add(" A@B.c", "*"));
    EXPECT_EQ(Lines{"Condition with sender:  A@B.c & receiver: * already exist"}, messages.all());
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditions());
}

TEST_P(RuleConditions, EqualMeansBothSides) {
    EXPECT_CODE(ZXPOL_S_OK, add("a@b.c", "x@y.z"));
    EXPECT_CODE(ZXPOL_S_OK, add("*", "*"));
    EXPECT_EQ(3u, conditions().size());
}

TEST_P(RuleConditions, TheSamePairTwiceInOneListIsWrittenOnce) {
    EXPECT_CODE(ZXPOL_S_OK, addAll(Conditions{{"d@e.f", "*"}, {"D@e.f", "*"}}));
    EXPECT_EQ((Lines{"a@b.c -> *", "d@e.f -> *"}), conditions());
}

TEST_P(RuleConditions, InvalidPairsAreLoggedAndTheOthersWritten) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, addAll(Conditions{{"one@b.c", "*"}, {" bad ", "*"}, {"two@b.c", "*"}}));
    EXPECT_EQ(Lines{"Condition with sender:  bad  & receiver: * is not valid. Skip!"}, messages.all());
    EXPECT_EQ((Lines{"a@b.c -> *", "one@b.c -> *", "two@b.c -> *"}), conditions());
}

TEST_P(RuleConditions, SidesWithoutTheirNulAreInvalid) {
    _ZxPolAddrPairCond pair = zxtest::pairOf("*", "*");
    std::memset(pair.receiver, 'r', sizeof pair.receiver);
    const unsigned char* list[] = {zxtest::asCondition(pair), nullptr};
    int error = ZXPOL_S_OK;
    zxpol_addConditionEx(rule("\\A").get(), list, ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    EXPECT_EQ(1u, conditions().size());
}

TEST_P(RuleConditions, NullPairsAndListsAreRefused) {
    const Handle a = rule("\\A");
    int error = ZXPOL_S_OK;
    zxpol_addCondition(a.get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_removeCondition(a.get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_addConditionEx(a.get(), nullptr, ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_removeConditionEx(a.get(), nullptr, ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_updateConditionEx(a.get(), nullptr, nullptr, ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(RuleConditions, RemovingClosesTheGap) {
    add("b@b.c", "*");
    add("c@b.c", "*");
    EXPECT_CODE(ZXPOL_S_OK, remove("B@B.C", "*"));
    EXPECT_EQ((Lines{"a@b.c -> *", "c@b.c -> *"}), conditions());
    EXPECT_EQ("c@b.c,*", key().text("condition2"));
    EXPECT_FALSE(key().bytes("condition3"));
}

TEST_P(RuleConditions, RemovingOneThatIsNotThereFindsNothing) {
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("x@b.c", "*"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("a@b.c", "a@b.c"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(" a@b.c", "*"));  // sides are not trimmed here
    EXPECT_EQ(1u, conditions().size());
}

TEST_P(RuleConditions, RemovingStopsAtTheFirstThatIsNotThere) {
    add("b@b.c", "*");
    const Conditions list{{"a@b.c", "*"}, {"x@b.c", "*"}, {"b@b.c", "*"}};
    int error = ZXPOL_S_OK;
    zxpol_removeConditionEx(rule("\\A").get(), list.list(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
    EXPECT_EQ(Lines{"b@b.c -> *"}, conditions());
}

TEST_P(RuleConditions, OfAnotherMatchTypeAreNotSupported) {
    key().setNumber("matchType", 1);
    const Handle a = rule("\\A");
    const Conditions list{{"x@b.c", "*"}};
    _ZxPolAddrPairCond pair = zxtest::pairOf("x@b.c", "*");
    const uint32_t indices[] = {0};
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, enumerate(a.get(), 0, &pair));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, add("x@b.c", "*"));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, remove("a@b.c", "*"));
    for (const ZxPolCondCheck mode : {ZXPOL_COND_CHECK_NONE, ZXPOL_COND_CHECK_HIERARCHY}) {
        int error = ZXPOL_S_OK;
        zxpol_addConditionEx(a.get(), list.list(), mode, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_removeConditionEx(a.get(), list.list(), mode, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_updateConditionEx(a.get(), indices, list.list(), mode, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_updateConditionEx(a.get(), nullptr, list.list(), mode, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    }
    EXPECT_EQ("a@b.c,*", key().text("condition1"));
    EXPECT_FALSE(key().bytes("condition2"));
}

TEST_P(RuleConditions, WithoutAMatchTypeAreTheStoresFailure) {
    key().removeValue("matchType");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, add("x@b.c", "*"));
    _ZxPolAddrPairCond pair = {};
    EXPECT_CODE(ZXREG_E_NOT_FOUND, enumerate(rule("\\A").get(), 0, &pair));
}

}  // namespace
