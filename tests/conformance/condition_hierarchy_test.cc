// Conditions checked against the parent rule, and the clean-up of descendants.
#include "support/policy_fixture.h"

namespace {

using zxtest::Conditions;
using zxtest::Handle;
using Lines = std::vector<std::string>;

class ConditionHierarchy : public zxtest::PolicyTest {
protected:
    static constexpr ZxPolCondCheck check = ZXPOL_COND_CHECK_HIERARCHY;

    // What an operation returned: its code and its list as "path: sender -> receiver; ...", "none" for null.
    struct Outcome {
        int code = ZXPOL_S_OK;
        Lines list;
    };
    static Outcome taken(int code, _ZxPolErrorCond** list) {
        Outcome outcome{code, {}};
        if (list == nullptr) outcome.list.push_back("none");
        for (_ZxPolErrorCond** entry = list; entry != nullptr && *entry != nullptr; ++entry) {
            std::string line = std::string((*entry)->ruleName) + ":";
            for (unsigned char** at = (*entry)->conds; *at != nullptr; ++at) {
                _ZxPolAddrPairCond pair;
                std::memcpy(&pair, *at, sizeof pair);
                line += std::string(" ") + pair.sender + "->" + pair.receiver;
            }
            outcome.list.push_back(line);
        }
        if (list != nullptr) zxpol_freeErrorConds(list, &code);
        return outcome;
    }
    Outcome add(const std::string& path, const Conditions& conditions, ZxPolCondCheck mode = check) {
        _ZxPolErrorCond** list = reinterpret_cast<_ZxPolErrorCond**>(&list);
        int error = ZXPOL_S_OK;
        zxpol_addConditionEx(rule(path).get(), conditions.list(), mode, &list, &error);
        return taken(error, list);
    }
    Outcome remove(const std::string& path, const Conditions& conditions, ZxPolCondCheck mode = check) {
        _ZxPolErrorCond** list = reinterpret_cast<_ZxPolErrorCond**>(&list);
        int error = ZXPOL_S_OK;
        zxpol_removeConditionEx(rule(path).get(), conditions.list(), mode, &list, &error);
        return taken(error, list);
    }
    Outcome replace(const std::string& path, const Conditions& conditions, ZxPolCondCheck mode = check) {
        return update(path, nullptr, conditions, mode);
    }
    Outcome update(const std::string& path, const uint32_t* indices, const Conditions& conditions,
                   ZxPolCondCheck mode = check) {
        _ZxPolErrorCond** list = reinterpret_cast<_ZxPolErrorCond**>(&list);
        int error = ZXPOL_S_OK;
        zxpol_updateConditionEx(rule(path).get(), indices, conditions.list(), mode, &list, &error);
        return taken(error, list);
    }
    // Expects a code and a list.
    static void expect(int code, const Lines& list, const Outcome& outcome) {
        EXPECT_CODE(code, outcome.code);
        EXPECT_EQ(list, outcome.list);
    }
    const Lines none{"none"};

    // The root's conditions become the given ones, whatever is below.
    void setRoot(const Conditions& conditions) { replace("\\", conditions, ZXPOL_COND_CHECK_NONE); }
};
ZXTEST_ON_BOTH_ENGINES(ConditionHierarchy);

TEST_P(ConditionHierarchy, AListReferenceIsTakenOnTrustOnItsSide) {
    addRule("\\", "A", "*", "x@y.z");
    setRoot(Conditions{{"a@b.c", "x@y.z"}});
    expect(ZXPOL_S_OK, none, add("\\A", Conditions{{"(list1)", "x@y.z"}}));
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A: (list1)->other@y.z"}, add("\\A", Conditions{{"(list1)", "other@y.z"}}));
    setRoot(Conditions{{"(list2)", "x@y.z"}});
    expect(ZXPOL_S_OK, none, add("\\A", Conditions{{"q@r.s", "x@y.z"}}));
}

TEST_P(ConditionHierarchy, WithoutTheCheckTheParentIsNotAsked) {
    addRule("\\", "A");
    setRoot(Conditions{{"a@b.c", "*"}});
    rawRule().setNumber("matchType", 1);
    expect(ZXPOL_S_OK, none, add("\\A", Conditions{{"x@y.z", "*"}}, ZXPOL_COND_CHECK_NONE));
    EXPECT_EQ(2u, conditionsOf("\\A").size());
}

TEST_P(ConditionHierarchy, UncoveredPairsAreListedAndNothingIsWritten) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A\\B: x@y.z->* *->*"},
           add("\\A\\B", Conditions{{"x@y.z", "*"}, {"d@b.c", "*"}, {"*", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A\\B"));
}

TEST_P(ConditionHierarchy, AnyOtherModeChecksToo) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A\\B: *->*"},
           add("\\A\\B", Conditions{{"*", "*"}}, static_cast<ZxPolCondCheck>(7)));
}

TEST_P(ConditionHierarchy, TheListMayBeUnwanted) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    const Conditions uncovered{{"*", "*"}};
    int error = ZXPOL_S_OK;
    zxpol_addConditionEx(rule("\\A\\B").get(), uncovered.list(), check, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);
    const Conditions first{{"*@b.c", "*"}};
    error = ZXPOL_S_OK;
    zxpol_removeConditionEx(rule("\\A").get(), first.list(), check, nullptr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_TRUE(conditionsOf("\\A\\B").empty());
}

TEST_P(ConditionHierarchy, OnePairOfTheParentMustCoverBothSides) {
    addRule("\\", "A", "a@b.c", "x@y.z");
    setRoot(Conditions{{"a@b.c", "x@y.z"}, {"d@e.f", "u@v.w"}});
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A: a@b.c->u@v.w"}, add("\\A", Conditions{{"a@b.c", "u@v.w"}}));
    expect(ZXPOL_S_OK, none, add("\\A", Conditions{{"D@E.F", "u@v.w"}}));
}

TEST_P(ConditionHierarchy, PatternsAreComparedAsTexts) {
    addRule("\\", "A", "x@mail.b.c");
    setRoot(Conditions{{"*@*.b.c", "*"}});
    expect(ZXPOL_S_OK, none, add("\\A", Conditions{{"*@*.b.c", "*"}, {"name@*.b.c", "*@*"}, {"*@mail.b.c", "*"}}));
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A: *@b.c->*"}, add("\\A", Conditions{{"*@b.c", "*"}}));
}

TEST_P(ConditionHierarchy, TheRootIsNeverCheckedUpward) {
    setRoot(Conditions{{"a@b.c", "*"}});
    expect(ZXPOL_S_OK, none, add("\\", Conditions{{"x@y.z", "*"}}));
    EXPECT_EQ(2u, conditionsOf("\\").size());
}

TEST_P(ConditionHierarchy, AParentThatCannotBeReadIsItsOwnFailure) {
    addRule("\\", "A");
    addRule("\\A", "B", "a@b.c");
    rawRule("\\A").setNumber("condition1", 5);
    expect(ZXPOL_E_INVALID_FORMAT, none, add("\\A\\B", Conditions{{"x@y.z", "*"}}));
    rawRule("\\A").setText("condition1", "*,*");
    rawRule("\\A").setNumber("matchType", 1);
    expect(ZXPOL_E_NOT_SUPPORTED, none, add("\\A\\B", Conditions{{"x@y.z", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A\\B"));
}

TEST_P(ConditionHierarchy, RemovingCoverRemovesFromAllBelow) {
    addRule("\\", "A", "a@b.c");
    addRule("\\A", "B", "a@b.c");
    addCondition("\\", "x@y.z", "*");
    addCondition("\\A", "x@y.z", "*");
    expect(ZXPOL_S_OK, {"\\A: a@b.c->*", "\\A\\B: a@b.c->*"}, remove("\\", Conditions{{"*", "*"}}));
    EXPECT_EQ(Lines{"x@y.z -> *"}, conditionsOf("\\"));
    EXPECT_EQ(Lines{"x@y.z -> *"}, conditionsOf("\\A"));
    EXPECT_TRUE(conditionsOf("\\A\\B").empty());
}

TEST_P(ConditionHierarchy, RemovingWithoutALossGivesAnEmptyList) {
    addRule("\\", "A", "a@b.c");
    addCondition("\\", "x@y.z", "*");
    expect(ZXPOL_S_OK, {}, remove("\\", Conditions{{"x@y.z", "*"}}));
}

TEST_P(ConditionHierarchy, RemovingWithoutTheCheckCleansNothingUp) {
    addRule("\\", "A", "a@b.c");
    expect(ZXPOL_S_OK, none, remove("\\", Conditions{{"*", "*"}}, ZXPOL_COND_CHECK_NONE));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A"));
}

TEST_P(ConditionHierarchy, AFailedRemovalCleansNothingUp) {
    addRule("\\", "A", "a@b.c");
    setRoot(Conditions{{"x@y.z", "*"}});
    expect(ZXPOL_E_NOT_FOUND, none, remove("\\", Conditions{{"q@r.s", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A"));
}

TEST_P(ConditionHierarchy, BelowAChildThatKeepsAllNothingIsLookedAt) {
    addRule("\\", "A", "a@b.c");
    addRule("\\A", "B", "a@b.c");
    addCondition("\\A\\B", "uncovered@b.c", "*");
    addCondition("\\", "x@y.z", "*");
    expect(ZXPOL_S_OK, {}, remove("\\", Conditions{{"x@y.z", "*"}}));
    EXPECT_EQ(2u, conditionsOf("\\A\\B").size());
}

TEST_P(ConditionHierarchy, AFailureBelowPutsTheRemovedPairsBack) {
    addRule("\\", "First", "a@b.c");
    addRule("\\", "A", "a@b.c");
    addCondition("\\A", "x@y.z", "*");
    addRule("\\A", "B", "a@b.c");
    rawRule("\\A\\B").setNumber("matchType", 1);
    addCondition("\\", "x@y.z", "*");
    expect(ZXPOL_E_NOT_SUPPORTED, none, remove("\\", Conditions{{"*", "*"}}));
    EXPECT_EQ(Lines{"x@y.z -> *"}, conditionsOf("\\"));                   // stays removed
    EXPECT_TRUE(conditionsOf("\\First").empty());                         // not undone
    EXPECT_EQ((Lines{"x@y.z -> *", "a@b.c -> *"}), conditionsOf("\\A"));  // restored, at the end
}

TEST_P(ConditionHierarchy, AChildOfAnotherMatchTypeEndsTheCleanUp) {
    addRule("\\", "A", "a@b.c");
    addRule("\\", "B", "a@b.c");
    rawRule("\\A").setNumber("matchType", 1);
    setRoot(Conditions{{"*", "*"}, {"x@y.z", "*"}});
    expect(ZXPOL_E_NOT_SUPPORTED, none, remove("\\", Conditions{{"*", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\B"));
}

TEST_P(ConditionHierarchy, ReplacingChecksUpwardAndCleansDownward) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    addCondition("\\A\\B", "d@b.c", "*");
    expect(ZXPOL_S_OK, {"\\A\\B: d@b.c->*"}, replace("\\A", Conditions{{"a@b.c", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A"));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A\\B"));
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A\\B: z@b.c->*"}, replace("\\A\\B", Conditions{{"z@b.c", "*"}}));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A\\B"));
}

TEST_P(ConditionHierarchy, UpdatingChecksUpwardAndCleansDownward) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    const uint32_t first[] = {0};
    expect(ZXPOL_S_OK, {"\\A\\B: a@b.c->*"}, update("\\A", first, Conditions{{"d@b.c", "*"}}));
    EXPECT_TRUE(conditionsOf("\\A\\B").empty());
    expect(ZXPOL_E_CONDITION_CHECK, {"\\A\\B: *->*"}, update("\\A\\B", first, Conditions{{"*", "*"}}));
}

TEST_P(ConditionHierarchy, UpdatingWithoutTheCheckDoesNeither) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    setRoot(Conditions{{"q@r.s", "*"}});
    expect(ZXPOL_S_OK, none, replace("\\A", Conditions{{"x@y.z", "*"}}, ZXPOL_COND_CHECK_NONE));
    EXPECT_EQ(Lines{"a@b.c -> *"}, conditionsOf("\\A\\B"));
}

TEST_P(ConditionHierarchy, ANullListHasNothingToFree) {
    int error = ZXPOL_S_OK;
    zxpol_freeErrorConds(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    zxpol_freeErrorConds(nullptr, nullptr);
}

TEST_P(ConditionHierarchy, AListIsFreedWhateverTheResultHolds) {
    addRule("\\", "A", "*@b.c");
    addRule("\\A", "B", "a@b.c");
    const Conditions uncovered{{"*", "*"}};
    for (const bool withResult : {true, false}) {
        _ZxPolErrorCond** list = nullptr;
        int error = ZXPOL_S_OK;
        zxpol_addConditionEx(rule("\\A\\B").get(), uncovered.list(), check, &list, &error);
        ASSERT_NE(nullptr, list);
        zxpol_freeErrorConds(list, withResult ? &error : nullptr);
        EXPECT_CODE(ZXPOL_E_CONDITION_CHECK, error);  // not written
    }
}

}  // namespace
