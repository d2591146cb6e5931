// What an explained match tells: each step of the two walks, the conditions, the tasks, and what is passed over.
#include "support/recorded_steps.h"

namespace {

using zxtest::Lines;

constexpr uint32_t kBest = 1;

class Explanation : public zxtest::ExplainTest {
protected:
    // The lines that begin with `head`.
    static Lines only(const std::string& head, const Lines& lines) {
        Lines found;
        for (const std::string& line : lines)
            if (line.compare(0, head.size(), head) == 0) found.push_back(line);
        return found;
    }

    // The steps of the tasks of \A for a mail that is of it.
    Lines tasksOfA() const { return only("\\A task", explained("s@s.example", {"r@a.example"})); }

    static void setOption(uint32_t priority, uint32_t weight) {
        const _ZxPolMatchOption option = {1, priority, weight, 0, 0};
        int error = ZXPOL_S_OK;
        zxpol_setMatchOption(&option, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
};
ZXTEST_ON_BOTH_ENGINES(Explanation);

// ---- walks ------------------------------------------------------------------------------------------------

TEST_P(Explanation, FirstMatchLooksAtChildrenBeforeTheirParent) {
    addRule("\\", "A", "*", "*@a.example");
    addRule("\\A", "B", "x@s.example", "b@a.example");
    addRule("\\", "C");
    EXPECT_EQ((Lines{"receiver 0 smtp:r@a.example", "rule \\A\\B", "\\A\\B 0 receiver r@a.example in b@a.example no",
                     "checked \\A\\B no", "rule \\A", "\\A 0 receiver r@a.example in *@a.example yes 4000",
                     "\\A 0 sender s@s.example in * yes 0", "checked \\A yes 0 0,4000",
                     "decided 0 smtp:r@a.example yes \\A", "tasks of \\A"}),
              explained("s@s.example", {"smtp:r@a.example"}));
}

TEST_P(Explanation, BestMatchTellsWhichSiblingWins) {
    addRule("\\", "A", "*", "*@a.example");
    addRule("\\", "B", "*", "r@a.example");
    addRule("\\", "C", "*", "*@*.example");
    addRule("\\B", "D", "*@s.example", "r@a.example");
    const Lines steps = explained("s@s.example", {"r@a.example"}, kBest);
    EXPECT_EQ((Lines{"choice \\A better 0,4000 -", "choice \\B better 0,5000 \\A", "choice \\C not better 0,2001 \\B",
                     "choice \\B\\D better 4000,5000 -"}),
              only("choice", steps));
    EXPECT_EQ((Lines{"rule \\", "rule \\A", "rule \\B", "rule \\C", "rule \\B\\D"}), only("rule", steps));
    EXPECT_EQ(Lines{"decided 0 r@a.example yes \\B\\D"}, only("decided", steps));
}

TEST_P(Explanation, BestMatchEndsAtAPriorityThatNothingBeats) {
    addRule("\\", "A", "s@s.example", "r@a.example");
    addRule("\\", "B");
    addRule("\\A", "C", "s@s.example", "r@a.example");
    const Lines steps = explained("s@s.example", {"r@a.example"}, kBest);
    EXPECT_EQ(Lines{"choice \\A unbeatable 5000,5000 -"}, only("choice", steps));
    EXPECT_EQ((Lines{"rule \\", "rule \\A"}), only("rule", steps));
}

TEST_P(Explanation, EachReceiverWalksByItselfAndRulesAreCollectedOnce) {
    addRule("\\", "A", "*", "*@a.example");
    addRule("\\", "B", "*", "*@b.example");
    const Lines steps = explained("", {"x@b.example", "y@a.example", "z@b.example"});
    EXPECT_EQ((Lines{"receiver 0 x@b.example", "receiver 1 y@a.example", "receiver 2 z@b.example"}),
              only("receiver", steps));
    EXPECT_EQ(
        (Lines{"decided 0 x@b.example yes \\B", "decided 1 y@a.example yes \\A", "decided 2 z@b.example yes \\B"}),
        only("decided", steps));
    EXPECT_EQ((Lines{"tasks of \\B", "tasks of \\A"}), only("tasks", steps));
}

TEST_P(Explanation, AReceiverWithoutARuleIsDecided) {
    rawRule().setText("condition1", "*,*@a.example");
    EXPECT_EQ((Lines{"receiver 0 r@b.example", "rule \\", "\\ 0 receiver r@b.example in *@a.example no",
                     "checked \\ no", "decided 0 r@b.example no -"}),
              explained("s@s.example", {"r@b.example"}));
    EXPECT_EQ(Lines{}, explained("s@s.example", {}));
}

// ---- conditions -------------------------------------------------------------------------------------------

TEST_P(Explanation, TheConditionOfTheHighestPriorityDecidesInBestMatch) {
    addRule("\\", "A", "*", "*@a.example");
    addCondition("\\A", "*@s.example", "r@a.example");
    addCondition("\\A", "*", "r@a.example");
    EXPECT_EQ((Lines{"checked \\A yes 1 4000,5000"}),
              only("checked \\A", explained("s@s.example", {"r@a.example"}, kBest)));
    EXPECT_EQ((Lines{"checked \\A yes 0 0,4000"}), only("checked \\A", explained("s@s.example", {"r@a.example"})));
}

TEST_P(Explanation, WeightsAreThoseOfTheCallsOptions) {
    addRule("\\", "A", "*@s.example", "r@*.example");
    const auto weights = [&](uint32_t mode) {
        return only("checked \\A", explained("s@s.example", {"r@a.example"}, mode)).at(0);
    };
    EXPECT_EQ("checked \\A yes 0 4000,3001", weights(kBest));
    setOption(ZXPOL_PRIORITY_TOTAL, ZXPOL_WEIGHT_NAME_FIRST);
    EXPECT_EQ("checked \\A yes 0 3000,4001", weights(kBest));
    EXPECT_EQ("checked \\A yes 0 4000,3001", weights(0));
}

TEST_P(Explanation, TheEntryOfAListIsToldAsItIsStored) {
    create("L", {"*@s.example", "s@*.example", "\"S\".x@S.example"});
    addRule("\\", "A", "(L)", "*");
    const auto side = [&](const char* sender, uint32_t mode) {
        return only("\\A 0 sender", explained(sender, {"r@a.example"}, mode)).at(0);
    };
    for (const uint32_t mode : {0u, kBest}) {
        EXPECT_EQ("\\A 0 sender s@s.example in (L) yes 4000 by *@s.example", side("s@s.example", mode));
        EXPECT_EQ("\\A 0 sender s.X@s.example in (L) yes 5000 by \"S\".x@S.example", side("s.X@s.example", mode));
        EXPECT_EQ("\\A 0 sender s@t.example in (L) yes 3001 by s@*.example", side("s@t.example", mode));
        EXPECT_EQ("\\A 0 sender t@t.example in (L) no", side("smtp:t@t.example", mode));
    }
    setOption(ZXPOL_PRIORITY_TOTAL, ZXPOL_WEIGHT_NAME_FIRST);
    EXPECT_EQ("\\A 0 sender s@s.example in (L) yes 4001 by s@*.example", side("s@s.example", kBest));
}

TEST_P(Explanation, AListThatCannotBeAskedFailsItsRule) {
    addDirectoryList("Dir");
    addRule("\\", "A", "*", "(Nowhere)");
    addRule("\\", "B", "(Dir)", "*");
    const std::string missing = zxtest::codeText(ZXREG_E_NOT_FOUND);
    const std::string refused = zxtest::codeText(ZXPOL_E_NOT_SUPPORTED);
    for (const uint32_t mode : {0u, kBest}) {
        const Lines steps = explained("s@s.example", {"r@a.example"}, mode);
        EXPECT_EQ((Lines{"\\A 0 receiver r@a.example in (Nowhere) no failed " + missing}), only("\\A", steps));
        EXPECT_EQ((Lines{"checked \\A no failed " + missing}), only("checked \\A", steps));
        EXPECT_EQ((Lines{"\\B 0 sender s@s.example in (Dir) no failed " + refused}), only("\\B 0 sender", steps));
        EXPECT_EQ((Lines{"checked \\B no failed " + refused}), only("checked \\B", steps));
        EXPECT_EQ(Lines{"decided 0 r@a.example yes \\"}, only("decided", steps));
    }
    // The root's failure ends the match.
    rawRule().setText("condition1", "(Dir),*");
    EXPECT_EQ((Lines{"decided 0 r@a.example no - failed " + refused}),
              only("decided", explained("s@s.example", {"r@a.example", "t@a.example"}, kBest)));
}

TEST_P(Explanation, ConditionsThatCannotBeReadArePassedOver) {
    addRule("\\", "A");
    rawRule("\\A").setNumber("matchType", 1);
    EXPECT_EQ((Lines{"receiver 0 r@a.example", "rule \\A",
                     "passed over \\A failed " + zxtest::codeText(ZXPOL_E_NOT_SUPPORTED), "checked \\A no", "rule \\",
                     "\\ 0 receiver r@a.example in * yes 0", "\\ 0 sender s@s.example in * yes 0",
                     "checked \\ yes 0 0,0", "decided 0 r@a.example yes \\", "tasks of \\"}),
              explained("s@s.example", {"r@a.example"}));
}

TEST_P(Explanation, ChildrenThatCannotBeEnumeratedEndAFirstMatch) {
    addRule("\\", "A");
    rawRule("\\A").removeKey("rules");
    const std::string missing = zxtest::codeText(ZXREG_E_NOT_FOUND);
    EXPECT_EQ((Lines{"receiver 0 r@a.example", "passed over \\A failed " + missing,
                     "decided 0 r@a.example no - failed " + missing}),
              explained("s@s.example", {"r@a.example"}));
    const Lines best = explained("s@s.example", {"r@a.example"}, kBest);
    EXPECT_EQ((Lines{"passed over \\A failed " + missing}), only("passed over", best));
    EXPECT_EQ(Lines{"decided 0 r@a.example yes \\A"}, only("decided", best));
}

// ---- tasks ------------------------------------------------------------------------------------------------

TEST_P(Explanation, TasksAreToldFromTheRootDown) {
    addRule("\\", "A");
    addTask("\\", "t", {4, 1, 1});
    addTask("\\A", "u");
    EXPECT_EQ((Lines{"\\A task \\t 4 11 taken -", "\\A task \\A\\u 0 10 taken -"}), tasksOfA());
}

TEST_P(Explanation, ADisabledTaskIsNoOthersConcern) {
    addRule("\\", "A");
    setExclusive(4, ZXPOL_FILTER_ASC_EXCLUSIVE);
    addTask("\\", "t", {4, 0, 1});
    inactivate("\\A", "\\t");
    EXPECT_EQ((Lines{"\\A task \\t 4 01 disabled -"}), tasksOfA());
}

TEST_P(Explanation, AMarkSwitchesATaskOffInTheRuleThatCounts) {
    addRule("\\", "A");
    addTask("\\", "t", {0, 1, 1});
    addTask("\\", "u", {0, 1, 0});
    addTask("\\A", "v", {0, 1, 0});
    for (const char* task : {"\\T", "\\u", "\\a\\v\\"})
        inactivate("\\A", task);
    EXPECT_EQ((Lines{"\\A task \\t 0 11 inactive - by \\T in \\A", "\\A task \\u 0 10 taken -",
                     "\\A task \\A\\v 0 10 inactive - by \\a\\v\\ in \\A"}),
              tasksOfA());
    inactivate("\\", "\\u");
    EXPECT_EQ("\\A task \\u 0 10 inactive - by \\u in \\", tasksOfA().at(1));
}

TEST_P(Explanation, ATaskWhoseNameIsTooLongForMarksIsOffWithoutOne) {
    const std::string rule(100, 'A');
    const std::string task(200, 't');
    addRule("\\", rule);
    addTask("\\" + rule, task);
    EXPECT_EQ(Lines{"\\" + rule + " task \\" + rule + "\\" + task + " 0 10 inactive -"},
              only("\\" + rule + " task", explained("s@s.example", {"r@a.example"})));
}

TEST_P(Explanation, AnAscendingFilterIsHeldByTheFirstTask) {
    addRule("\\", "A");
    setExclusive(4, ZXPOL_FILTER_ASC_EXCLUSIVE);
    addTask("\\", "t", {4});
    addTask("\\A", "u", {4});
    EXPECT_EQ((Lines{"\\A task \\t 4 10 taken -", "\\A task \\A\\u 4 10 held \\t"}), tasksOfA());
}

TEST_P(Explanation, ADescendingFilterIsTakenOverByTheLastTask) {
    addRule("\\", "A");
    setExclusive(4, ZXPOL_FILTER_DESC_EXCLUSIVE);
    addTask("\\", "t", {4});
    addTask("\\A", "u", {4});
    addTask("\\A", "v", {4});
    EXPECT_EQ((Lines{"\\A task \\t 4 10 taken -", "\\A task \\A\\u 4 10 replaces \\t",
                     "\\A task \\A\\v 4 10 replaces \\A\\u"}),
              tasksOfA());
}

TEST_P(Explanation, AFilterOfAnUnknownTypeHoldsTasksForNobody) {
    addRule("\\", "A");
    raw("Rule").setNumber("ExcluId00000004", 2);
    addTask("\\A", "t", {4});
    EXPECT_EQ((Lines{"\\A task \\A\\t 4 10 held -"}), tasksOfA());
}

// ---- the call ---------------------------------------------------------------------------------------------

TEST_P(Explanation, RefusesNullArguments) {
    const char* receivers[] = {"r@a.example", nullptr};
    _ZxPolMatchPair* const untouched = reinterpret_cast<_ZxPolMatchPair*>(receivers);
    _ZxPolMatchPair* pairs = untouched;
    uint32_t count = 7;
    zxtest::RecordedSteps steps;
    const auto call = [&](const char* sender, const char** list, ZxPolMatchObserverFunction observer,
                          _ZxPolMatchPair** out, uint32_t* number) {
        int error = ZXPOL_S_OK;
        zxpol_explainMatch(ruleHive(), listHive(), 0, sender, list, observer, &steps, out, number, &error);
        return error;
    };
    const ZxPolMatchObserverFunction observe = &zxtest::RecordedSteps::observe;
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, call(nullptr, receivers, observe, &pairs, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, call("", nullptr, observe, &pairs, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, call("", receivers, nullptr, &pairs, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, call("", receivers, observe, nullptr, &count));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, call("", receivers, observe, &pairs, nullptr));
    EXPECT_EQ(untouched, pairs);
    EXPECT_EQ(7u, count);
    EXPECT_EQ(Lines{}, steps.lines());
}

// What an observer of a policy that changes, the given number of times, knows.
struct ChangingPolicy {
    zxtest::RecordedSteps steps;
    zxtest::RawKey* key;
    uint32_t changes;
};

void changeAtARule(void* policy, const _ZxPolMatchStep* step) {
    auto& seen = *static_cast<ChangingPolicy*>(policy);
    zxtest::RecordedSteps::observe(&seen.steps, step);
    if (step->kind != ZXPOL_STEP_RULE || seen.changes == 0) return;
    seen.key->setText("condition1", "*,*@b" + std::to_string(--seen.changes) + ".example");
}

TEST_P(Explanation, BeginsAnewWhenThePolicyChanges) {
    addRule("\\", "A", "*", "*@a.example");
    zxtest::RawKey key = rawRule("\\A");
    ChangingPolicy policy{{}, &key, 1};
    const char* receivers[] = {"r@a.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_explainMatch(ruleHive(), listHive(), 0, "s@s.example", receivers, &changeAtARule, &policy, &pairs, &count,
                       &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_EQ(1u, count);
    EXPECT_EQ("\\: r@a.example |", lineOf(pairs[0]));
    zxpol_freeMatchPair(pairs, count, &error);
    EXPECT_EQ(
        (Lines{"receiver 0 r@a.example", "rule \\A", "\\A 0 receiver r@a.example in *@b0.example no", "checked \\A no",
               "rule \\", "\\ 0 receiver r@a.example in * yes 0", "\\ 0 sender s@s.example in * yes 0",
               "checked \\ yes 0 0,0", "decided 0 r@a.example yes \\", "tasks of \\"}),
        Lines(std::find(policy.steps.lines().begin(), policy.steps.lines().end(), "restart") + 1,
              policy.steps.lines().end()));
    EXPECT_EQ(1u, only("restart", policy.steps.lines()).size());
}

// Nothing that was told of a match without an answer is left to be believed.
TEST_P(Explanation, EndsWithARestartWhenThePolicyGoesOnChanging) {
    addRule("\\", "A", "*", "*@a.example");
    zxtest::RawKey key = rawRule("\\A");
    ChangingPolicy policy{{}, &key, 1000};
    const char* receivers[] = {"r@a.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_explainMatch(ruleHive(), listHive(), 0, "s@s.example", receivers, &changeAtARule, &policy, &pairs, &count,
                       &error);
    EXPECT_CODE(ZXREG_E_BUSY, error);
    EXPECT_EQ(nullptr, pairs);
    EXPECT_EQ(0u, count);
    EXPECT_EQ(4u, only("restart", policy.steps.lines()).size());
    EXPECT_EQ("restart", policy.steps.lines().back());
}

}  // namespace
