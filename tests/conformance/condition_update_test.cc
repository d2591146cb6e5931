// Replacing a rule's conditions, all of them or some by their indices.
#include "support/policy_fixture.h"

namespace {

using zxtest::Conditions;
using zxtest::DebugMessages;
using Lines = std::vector<std::string>;

class ConditionUpdate : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        addRule("\\", "A", "a@b.c");
        addCondition("\\A", "b@b.c", "*");
        addCondition("\\A", "c@b.c", "*");
    }
    int replace(const Conditions& conditions) { return update(nullptr, conditions); }
    int update(std::initializer_list<uint32_t> indices, const Conditions& conditions) {
        return update(indices.begin(), conditions);
    }
    int update(const uint32_t* indices, const Conditions& conditions) {
        int error = ZXPOL_S_OK;
        zxpol_updateConditionEx(rule("\\A").get(), indices, conditions.list(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
        return error;
    }
    zxtest::RawKey key() { return rawRule("\\A"); }
    Lines conditions() { return conditionsOf("\\A"); }
};
ZXTEST_ON_BOTH_ENGINES(ConditionUpdate);

TEST_P(ConditionUpdate, ReplacingTakesThePlaceOfAll) {
    EXPECT_CODE(ZXPOL_S_OK, replace(Conditions{{"x@b.c", "*"}, {" y@b.c ", "z@b.c"}}));
    EXPECT_EQ((Lines{"x@b.c -> *", "y@b.c -> z@b.c"}), conditions());
    EXPECT_EQ("y@b.c,z@b.c", key().text("condition2"));
    EXPECT_FALSE(key().bytes("condition3"));
}

TEST_P(ConditionUpdate, ReplacingWithNothingLeavesNone) {
    EXPECT_CODE(ZXPOL_S_OK, replace(Conditions{}));
    EXPECT_TRUE(conditions().empty());
}

TEST_P(ConditionUpdate, ReplacingStopsDeletingAtTheFirstGap) {
    key().removeValue("condition2");
    EXPECT_CODE(ZXPOL_S_OK, replace(Conditions{{"x@b.c", "*"}}));
    EXPECT_EQ("x@b.c,*", key().text("condition1"));
    EXPECT_FALSE(key().bytes("condition2"));
    EXPECT_EQ("c@b.c,*", key().text("condition3"));
    EXPECT_EQ((Lines{"x@b.c -> *", "c@b.c -> *"}), conditions());
}

TEST_P(ConditionUpdate, ReplacingGivesInvalidPairsNoNumber) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, replace(Conditions{{"x@b.c", "*"}, {"bad", "*"}, {"y@b.c", "*"}}));
    EXPECT_EQ(Lines{"Condition with sender: bad & receiver: * is not valid. Skip!"}, messages.all());
    EXPECT_EQ("x@b.c,*", key().text("condition1"));
    EXPECT_EQ("y@b.c,*", key().text("condition2"));
    EXPECT_FALSE(key().bytes("condition3"));
}

TEST_P(ConditionUpdate, ReplacingDoesNotLookForDuplicates) {
    EXPECT_CODE(ZXPOL_S_OK, replace(Conditions{{"x@b.c", "*"}, {"x@b.c", "*"}}));
    EXPECT_EQ((Lines{"x@b.c -> *", "x@b.c -> *"}), conditions());
}

TEST_P(ConditionUpdate, UpdatingRewritesTheValueNumberedOneAboveTheIndex) {
    EXPECT_CODE(ZXPOL_S_OK, update({2, 0}, Conditions{{" x@b.c", "*"}, {"y@b.c", "*"}}));
    EXPECT_EQ((Lines{"y@b.c -> *", "b@b.c -> *", "x@b.c -> *"}), conditions());
    EXPECT_EQ("x@b.c,*", key().text("condition3"));
}

TEST_P(ConditionUpdate, UpdatingPastTheEndWritesTheNumberedValue) {
    EXPECT_CODE(ZXPOL_S_OK, update({7}, Conditions{{"x@b.c", "*"}}));
    EXPECT_EQ("x@b.c,*", key().text("condition8"));
}

TEST_P(ConditionUpdate, BehindAGapTheNumberIsStillTheIndexPlusOne) {
    key().removeValue("condition1");
    // The condition enumerated first is the value condition2; index 0 still means condition1.
    EXPECT_CODE(ZXPOL_S_OK, update({0}, Conditions{{"x@b.c", "*"}}));
    EXPECT_EQ("x@b.c,*", key().text("condition1"));
    EXPECT_EQ("b@b.c,*", key().text("condition2"));
}

TEST_P(ConditionUpdate, AnotherEqualConditionEndsTheUpdate) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_ALREADY_EXISTS, update({0, 1, 2}, Conditions{{"x@b.c", "*"}, {"C@b.c", "*"}, {"y@b.c", "*"}}));
    EXPECT_EQ(Lines{"Condition with sender: C@b.c & receiver: * already exist"}, messages.all());
    EXPECT_EQ((Lines{"x@b.c -> *", "b@b.c -> *", "c@b.c -> *"}), conditions());
}

TEST_P(ConditionUpdate, AConditionMayBecomeItself) {
    EXPECT_CODE(ZXPOL_S_OK, update({1}, Conditions{{"B@B.C", "*"}}));
    EXPECT_EQ((Lines{"a@b.c -> *", "B@B.C -> *", "c@b.c -> *"}), conditions());
}

TEST_P(ConditionUpdate, InvalidPairsAreLoggedAndTheOthersWritten) {
    const DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, update({0, 1, 2}, Conditions{{"x@b.c", "*"}, {"bad", "*"}, {"y@b.c", "*"}}));
    EXPECT_EQ(Lines{"Condition with sender: bad & receiver: * is not valid. Skip!"}, messages.all());
    EXPECT_EQ((Lines{"x@b.c -> *", "b@b.c -> *", "y@b.c -> *"}), conditions());
}

}  // namespace
