// The best match: at each level the matching child of the highest priority.
#include "support/policy_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class BestMatch : public zxtest::PolicyTest {
protected:
    // The path of the rule that matches a mail from a@mail.b.c to x@mail.y.z.
    std::string best(uint32_t mode = 1) {
        const Lines lines = matched("a@mail.b.c", {"x@mail.y.z"}, mode);
        if (lines.empty()) return "none";
        return lines[0].substr(0, lines[0].find(':'));
    }
    static int setOption(uint32_t mode, uint32_t priorityType, uint32_t weightType) {
        const _ZxPolMatchOption option = {mode, priorityType, weightType, 5, 6};
        int error = ZXPOL_S_OK;
        zxpol_setMatchOption(&option, &error);
        return error;
    }
};
ZXTEST_ON_BOTH_ENGINES(BestMatch);

TEST_P(BestMatch, TheHighestPriorityOfALevelWins) {
    addRule("\\", "A", "*@*.b.c");
    addRule("\\", "B", "a@mail.b.c");
    addRule("\\", "C", "*@mail.b.c");
    EXPECT_EQ("\\B", best());
    EXPECT_EQ("\\A", best(0));
    EXPECT_EQ("\\B", best(7));
}

TEST_P(BestMatch, TiesKeepTheEarlierSibling) {
    addRule("\\", "A", "*", "*@mail.y.z");
    addRule("\\", "B", "*@mail.b.c", "*");  // the same sum
    EXPECT_EQ("\\A", best());
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(rule().get(), "B", 1, &error);
    EXPECT_EQ("\\B", best());
}

TEST_P(BestMatch, AMatchingChildReplacesItsParentWhateverTheirPriorities) {
    addRule("\\", "A", "a@mail.b.c", "*@mail.y.z");
    addRule("\\A", "A1", "a@mail.b.c", "*@mail.y.z");
    rawRule("\\A\\A1").setText("condition1", "*,*");
    EXPECT_EQ("\\A\\A1", best());
}

TEST_P(BestMatch, OnlyTheBestOfALevelIsSearchedFurther) {
    addRule("\\", "A", "a@mail.b.c");
    addRule("\\", "B", "*@mail.b.c");
    addRule("\\B", "B1", "a@mail.b.c", "x@mail.y.z");
    EXPECT_EQ("\\A", best());
}

TEST_P(BestMatch, AFullyQualifiedMatchEndsTheSearch) {
    addRule("\\", "A", "a@mail.b.c", "x@mail.y.z");
    addRule("\\A", "A1", "a@mail.b.c", "x@mail.y.z");
    addRule("\\", "B", "a@mail.b.c", "x@mail.y.z");
    EXPECT_EQ("\\A", best());
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(rule().get(), "B", 1, &error);
    EXPECT_EQ("\\B", best());
}

TEST_P(BestMatch, AFullyQualifiedRootEndsTheSearch) {
    addRule("\\", "A");
    rawRule().setText("condition1", "a@mail.b.c,x@mail.y.z");
    EXPECT_EQ("\\", best());
}

TEST_P(BestMatch, NothingBelowARuleThatDoesNotMatchIsSearched) {
    addRule("\\", "A", "a@mail.b.c");
    rawRule().setText("condition1", "nobody@b.c,*");
    EXPECT_EQ("none", best());
    EXPECT_EQ("\\A", best(0));
}

TEST_P(BestMatch, WithoutAMatchingChildTheParentIsTheResult) {
    addRule("\\", "A", "nobody@b.c");
    addRule("\\A", "A1", "nobody@b.c");
    EXPECT_EQ("\\", best());
}

TEST_P(BestMatch, AChildThatCannotBeCheckedIsPassedOver) {
    addRule("\\", "Broken", "(Missing)");
    addRule("\\", "A", "*@mail.b.c");
    EXPECT_EQ("\\A", best());
}

TEST_P(BestMatch, ARootThatCannotBeCheckedFailsTheMatch) {
    rawRule().setText("condition1", "(Missing),*");
    const MatchResult result = match("a@mail.b.c", {"x@mail.y.z"}, 1);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, result.code);
    EXPECT_TRUE(result.lines.empty());
}

TEST_P(BestMatch, ChildrenThatCannotBeListedAreNotSearched) {
    addRule("\\", "A");
    rawRule("\\A").removeKey("rules");
    EXPECT_EQ("\\A", best());
}

TEST_P(BestMatch, ARulesPriorityIsThatOfItsBestCondition) {
    addRule("\\", "A", "*@mail.b.c");
    addRule("\\", "B", "*@b.c");
    rawRule("\\B").setText("condition1", "*,*");
    addCondition("\\B", "nobody@b.c", "x@mail.y.z");  // does not match
    EXPECT_EQ("\\A", best());
    addCondition("\\B", "a@mail.b.c", "*");
    EXPECT_EQ("\\B", best());
}

TEST_P(BestMatch, ThePriorityTypeDecidesWhichSideComesFirst) {
    addRule("\\", "Sender", "a@mail.b.c", "*");         // 5000, 0
    addRule("\\", "Both", "*@mail.b.c", "*@mail.y.z");  // 4000, 4000
    addRule("\\", "Receiver", "*", "x@mail.y.z");       // 0, 5000
    EXPECT_EQ("\\Both", best());
    setOption(1, ZXPOL_PRIORITY_SENDER_FIRST, 0);
    EXPECT_EQ("\\Sender", best());
    setOption(1, ZXPOL_PRIORITY_RECEIVER_FIRST, 0);
    EXPECT_EQ("\\Receiver", best());
}

TEST_P(BestMatch, EqualClassesOfTheFirstSideAreDecidedBySums) {
    addRule("\\", "A", "a@*.b.c", "*");         // 3002, 0
    addRule("\\", "B", "a@*.c", "*@mail.y.z");  // 3001, 4000
    setOption(1, ZXPOL_PRIORITY_SENDER_FIRST, 0);
    EXPECT_EQ("\\B", best());
}

TEST_P(BestMatch, TheWeightTypeDecidesBetweenNameAndDomain) {
    addRule("\\", "Name", "a@*.b.c");
    addRule("\\", "Domain", "*@mail.b.c");
    EXPECT_EQ("\\Domain", best());
    setOption(1, 0, ZXPOL_WEIGHT_NAME_FIRST);
    EXPECT_EQ("\\Name", best());
}

TEST_P(BestMatch, UnknownOptionsActAsZero) {
    addRule("\\", "Sender", "a@mail.b.c", "*");
    addRule("\\", "Both", "*@mail.b.c", "*@mail.y.z");
    for (const uint32_t type : {3u, 9u, 0xffffffffu}) {
        setOption(1, ZXPOL_PRIORITY_SENDER_FIRST, 0);
        EXPECT_CODE(ZXPOL_S_OK, setOption(1, type, 0));
        EXPECT_EQ("\\Both", best()) << type;
    }
    addRule("\\", "Name", "a@*.b.c", "*@mail.y.z");  // 3002 or 4002, against 4000 or 3000
    for (const uint32_t type : {2u, 7u, 0xffffffffu}) {
        setOption(1, 0, ZXPOL_WEIGHT_NAME_FIRST);
        EXPECT_EQ("\\Name", best());
        EXPECT_CODE(ZXPOL_S_OK, setOption(1, 0, type));
        EXPECT_EQ("\\Both", best()) << type;
    }
}

TEST_P(BestMatch, AFirstMatchOptionIsStoredAsBestMatch) {
    addRule("\\", "A");
    addRule("\\", "B", "a@mail.b.c");
    EXPECT_CODE(ZXPOL_S_OK, setOption(0, 0, 0));
    EXPECT_EQ("\\B", best(1));
    EXPECT_EQ("\\A", best(0));
}

TEST_P(BestMatch, OptionsAreNotSetByACallThatFails) {
    addRule("\\", "Sender", "a@mail.b.c", "*");
    addRule("\\", "Both", "*@mail.b.c", "*@mail.y.z");
    const _ZxPolMatchOption option = {1, ZXPOL_PRIORITY_SENDER_FIRST, 0, 0, 0};
    int error = ZXPOL_E_PARSE;
    zxpol_setMatchOption(&option, &error);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    zxpol_setMatchOption(&option, nullptr);
    error = ZXPOL_S_OK;
    zxpol_setMatchOption(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("\\Both", best());
}

TEST_P(BestMatch, TheOptionsDoNotTouchTheFirstMatch) {
    addRule("\\", "A", "*@mail.b.c", "*");
    addRule("\\", "B", "a@mail.b.c", "x@mail.y.z");
    setOption(1, ZXPOL_PRIORITY_RECEIVER_FIRST, ZXPOL_WEIGHT_NAME_FIRST);
    EXPECT_EQ("\\A", best(0));
}

TEST_P(BestMatch, GroupsReceiversByRule) {
    addRule("\\", "A", "*", "*@a.z");
    EXPECT_EQ((Lines{"\\A: 1@a.z 3@a.z |", "\\: 2@b.z |"}), matched("a@b.c", {"1@a.z", "2@b.z", "3@a.z"}, 1));
}

}  // namespace
