// Which rule applies to each receiver: the first match, and what a match returns.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using Lines = std::vector<std::string>;

class FirstMatch : public zxtest::PolicyTest {
protected:
    // The whole result of the function that always walks for the first match.
    Lines firstMatched(const char* sender, std::initializer_list<const char*> receivers) {
        std::vector<const char*> list(receivers);
        list.push_back(nullptr);
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        int error = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfo(ruleHive(), listHive(), sender, list.data(), &pairs, &count, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        Lines lines;
        for (uint32_t at = 0; at < count; ++at)
            lines.push_back(lineOf(pairs[at]));
        zxpol_freeMatchPair(pairs, count, &error);
        return lines;
    }
};
ZXTEST_ON_BOTH_ENGINES(FirstMatch);

TEST_P(FirstMatch, TheRootMatchesWhatNoChildMatches) {
    EXPECT_EQ(Lines{"\\: x@y.z |"}, firstMatched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, ChildrenComeBeforeTheirParent) {
    addRule("\\", "A");
    addRule("\\A", "B");
    EXPECT_EQ(Lines{"\\A\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, SiblingsComeInTheirOrder) {
    addRule("\\", "A");
    addRule("\\", "B");
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(rule().get(), "B", 1, &error);
    EXPECT_EQ(Lines{"\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, AWholeSubtreeComesBeforeTheNextSibling) {
    addRule("\\", "A");
    addRule("\\A", "A1");
    addRule("\\", "B");
    rawRule("\\A").setText("condition1", "nobody@b.c,*");
    EXPECT_EQ(Lines{"\\A\\A1: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, AChildMayMatchWhereItsParentDoesNot) {
    addRule("\\", "A", "nobody@b.c");
    addRule("\\A", "B", "nobody@b.c");
    rawRule("\\A\\B").setText("condition1", "*,*");
    EXPECT_EQ(Lines{"\\A\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
    rawRule().setText("condition1", "nobody@b.c,*");
    EXPECT_EQ(Lines{"\\A\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, AnExacterSiblingDoesNotBeatAnEarlierOne) {
    addRule("\\", "A");
    addRule("\\", "B", "a@b.c", "x@y.z");
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, ReceiversOfOneRuleShareAPairInOrderOfFirstMatch) {
    addRule("\\", "A", "*", "*@a.z");
    addRule("\\", "B", "*", "*@b.z");
    EXPECT_EQ((Lines{"\\B: 1@b.z 4@b.z |", "\\: 2@c.z |", "\\A: 3@a.z 5@a.z |"}),
              matched("a@b.c", {"1@b.z", "2@c.z", "3@a.z", "4@b.z", "5@a.z"}));
}

TEST_P(FirstMatch, AReceiverGivenTwiceIsReturnedTwice) {
    EXPECT_EQ(Lines{"\\: x@y.z x@y.z |"}, matched("a@b.c", {"x@y.z", "x@y.z"}));
}

TEST_P(FirstMatch, ReceiversThatMatchNoRuleAreInNoPair) {
    rawRule().setText("condition1", "*,*@y.z");
    EXPECT_EQ(Lines{"\\: x@y.z |"}, matched("a@b.c", {"q@r.s", "x@y.z"}));
}

TEST_P(FirstMatch, WithoutAnyConditionNothingMatches) {
    rawRule().removeValue("condition1");
    _ZxPolMatchPair* pairs = reinterpret_cast<_ZxPolMatchPair*>(&pairs);
    uint32_t count = 99;
    const char* receivers[] = {"x@y.z", nullptr};
    for (const uint32_t mode : {0u, 1u}) {
        int error = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfoEx(ruleHive(), listHive(), mode, "a@b.c", receivers, &pairs, &count, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_EQ(nullptr, pairs);
        EXPECT_EQ(0u, count);
    }
}

TEST_P(FirstMatch, WithoutReceiversNothingMatches) {
    EXPECT_EQ(Lines{}, matched("a@b.c", {}));
}

TEST_P(FirstMatch, TheNullSenderIsTheEmptyText) {
    addRule("\\", "A", "*@*.b.c");
    EXPECT_EQ(Lines{"\\: x@y.z |"}, matched("", {"x@y.z"}));
}

TEST_P(FirstMatch, TheResultHoldsTheCallersReceiversAndTaskHandles) {
    addRule("\\", "A");
    addTasks("\\A", {"s", "t"});
    const char* receivers[] = {"x@y.z", "q@r.s", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfo(ruleHive(), listHive(), "a@b.c", receivers, &pairs, &count, &error);
    ASSERT_EQ(1u, count);
    EXPECT_STREQ("\\A", pairs[0].rulePath);
    EXPECT_EQ(receivers[0], pairs[0].receivers[0]);
    EXPECT_EQ(receivers[1], pairs[0].receivers[1]);
    EXPECT_EQ(nullptr, pairs[0].receivers[2]);
    ASSERT_EQ(2u, pairs[0].taskCount);
    EXPECT_EQ(ZXPOL_HANDLE_TASK, pairs[0].tasks[0]->kind);
    EXPECT_EQ("s", displayNameOf(pairs[0].tasks[0]));
    EXPECT_EQ("t", displayNameOf(pairs[0].tasks[1]));
    error = ZXPOL_E_PARSE;
    zxpol_freeMatchPair(pairs, count, &error);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
}

TEST_P(FirstMatch, ARuleWithoutTasksHasNoArrayOfThem) {
    const char* receivers[] = {"x@y.z", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfo(ruleHive(), listHive(), "a@b.c", receivers, &pairs, &count, &error);
    ASSERT_EQ(1u, count);
    EXPECT_EQ(nullptr, pairs[0].tasks);
    EXPECT_EQ(0u, pairs[0].taskCount);
    zxpol_freeMatchPair(pairs, count, nullptr);
    zxpol_freeMatchPair(nullptr, 0, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(FirstMatch, ARuleThatCannotBeCheckedIsPassedOver) {
    addRule("\\", "Broken", "(Missing)");
    addRule("\\", "A", "*");
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
    addRule("\\Broken", "B", "a@b.c");
    EXPECT_EQ(Lines{"\\Broken\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
}

TEST_P(FirstMatch, ARootThatCannotBeCheckedFailsTheMatch) {
    rawRule().setText("condition1", "(Missing),*");
    const MatchResult result = match("a@b.c", {"x@y.z"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, result.code);
    EXPECT_TRUE(result.lines.empty());
}

TEST_P(FirstMatch, AFailureForOneReceiverFailsTheWholeMatch) {
    addRule("\\", "A", "*", "x@y.z");
    rawRule().setText("condition1", "(Missing),*");
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, matched("a@b.c", {"x@y.z"}));
    const MatchResult result = match("a@b.c", {"x@y.z", "q@r.s"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, result.code);
    EXPECT_TRUE(result.lines.empty());
}

TEST_P(FirstMatch, ChildrenThatCannotBeListedFailTheMatch) {
    addRule("\\", "A");
    addRule("\\", "B");
    rawRule("\\A").removeKey("rules");
    const MatchResult result = match("a@b.c", {"x@y.z"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, result.code);
    EXPECT_TRUE(result.lines.empty());
}

TEST_P(FirstMatch, ARootThatCannotBeOpenedFailsTheMatch) {
    closeHives();
    openHives();
    rawRule().removeKey("rules");
    rawRule().removeKey("tasks");
    rawRule().removeKey("inactive");
    raw("Rule").removeKey("Mail");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, match("a@b.c", {"x@y.z"}).code);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, match("a@b.c", {"x@y.z"}, 1).code);
}

TEST_P(FirstMatch, IsWhatTheShortFunctionAlwaysLooksFor) {
    addRule("\\", "A");
    addRule("\\", "B", "a@b.c", "x@y.z");
    const _ZxPolMatchOption best = {1, 0, 0, 0, 0};
    int error = ZXPOL_S_OK;
    zxpol_setMatchOption(&best, &error);
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, firstMatched("a@b.c", {"x@y.z"}));
    EXPECT_EQ(Lines{"\\A: x@y.z |"}, matched("a@b.c", {"x@y.z"}, 0));
    EXPECT_EQ(Lines{"\\B: x@y.z |"}, matched("a@b.c", {"x@y.z"}, 1));
}

TEST_P(FirstMatch, BothHandlesAreChecked) {
    const char* receivers[] = {"x@y.z", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    const auto code = [&](_ZxPolComHandle* rules, _ZxPolComHandle* lists) {
        int plain = ZXPOL_S_OK, ex = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfo(rules, lists, "a@b.c", receivers, &pairs, &count, &plain);
        zxpol_matchRuleByMailInfoEx(rules, lists, 1, "a@b.c", receivers, &pairs, &count, &ex);
        EXPECT_CODE(plain, ex);
        return plain;
    };
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(nullptr, listHive()));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(ruleHive(), nullptr));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, code(listHive(), listHive()));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, code(ruleHive(), ruleHive()));
    _ZxPolComHandle hollow = {ZXPOL_HANDLE_ADDRLIST_HIVE, nullptr};
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, code(ruleHive(), &hollow));
}

TEST_P(FirstMatch, NullArgumentsAreRefused) {
    const char* receivers[] = {"x@y.z", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    const auto code = [&](const char* sender, const char** list, _ZxPolMatchPair** out, uint32_t* number) {
        int error = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfo(ruleHive(), listHive(), sender, list, out, number, &error);
        return error;
    };
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(nullptr, receivers, &pairs, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("a@b.c", nullptr, &pairs, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("a@b.c", receivers, nullptr, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("a@b.c", receivers, &pairs, nullptr));
}

}  // namespace
