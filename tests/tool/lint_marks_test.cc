// lint: inactive marks, the tasks that they and exclusive filters leave out, and what it takes to find that out.
#include <gmock/gmock.h>

#include "analysis/lint.h"
#include "analysis/mark_trial.h"
#include "change/apply.h"
#include "policy/policy_reader.h"
#include "support/fault_store.h"
#include "tool_error.h"

namespace tool {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LintMarks : public testing::Test {
protected:
    ~LintMarks() override { zxtest::failNoStoreCall(); }

    void apply(const std::string& policy) const { applyPolicy(_store, "p", readPolicy("p", policy), false); }

    std::vector<std::string> found(const std::string& id) const {
        std::vector<std::string> found;
        for (const Finding& finding : lintPolicy(_store, {}).findings)
            if (finding.id == id) found.push_back(finding.place + ": " + finding.text);
        return found;
    }

    uint64_t storeCalls() const {
        zxtest::failNoStoreCall();
        const zxtest::CountedCalls counted;
        lintPolicy(_store, {});
        return zxtest::countedStoreCalls();
    }

    const Store& store() const { return _store; }

private:
    const Store _store{"memory:", Store::Missing::Create};
};

// The task light takes the filter, unless it is switched off; then heavy does.
const char* const kFilters = R"(zxpolicy: 1
exclusiveFilters: [{filter: 26, priority: asc}]
root:
  conditions: [{sender: "*", receiver: "*"}]
  tasks:
    - {name: light, filter: 26, overridable: true}
    - {name: heavy, filter: 26, overridable: true}
    - {name: plain, filter: 3, overridable: true}
  rules:
    - {name: S, conditions: [{sender: "*", receiver: "*@s.c"}], inactive: ['\light', '\plain']}
    - {name: T, conditions: [{sender: "*", receiver: "*@t.c"}], inactive: ['\heavy']}
)";

// As many rules and tasks that are switched off for all of them.
std::string manyRules(size_t count, bool isMarked) {
    std::string tasks, marks, rules;
    for (size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        tasks += (i == 0 ? "{name: t" : ", {name: t") + number + "}";
        marks += (i == 0 ? "'\\t" : ", '\\t") + number + "'";
        rules += "    - {name: R" + number + ", conditions: [{sender: \"*\", receiver: \"*@d" + number + ".c\"}]}\n";
    }
    return "zxpolicy: 1\nroot:\n  conditions: [{sender: \"*\", receiver: \"*\"}]\n  tasks: [" + tasks +
           "]\n  inactive: [" + (isMarked ? marks : "") + "]\n  rules:\n" + rules;
}

}  // namespace

TEST_F(LintMarks, FindsTheOneThatChangesNothingForAnExclusiveFilter) {
    apply(kFilters);
    EXPECT_THAT(found("idle-mark"),
                ElementsAre("rule \\T: its inactive mark \"\\\\heavy\" changes nothing: without it, too, an exclusive "
                            "filter leaves the task out"));
}

TEST_F(LintMarks, TakesNoTrialOfEachMarkOnEachRule) {
    constexpr uint64_t kCount = 20;
    apply(manyRules(kCount, false));
    const uint64_t without = storeCalls();
    apply(manyRules(kCount, true));
    // For each rule each task is looked for among all marks, though not once more for each mark.
    EXPECT_LT(storeCalls(), without + kCount * kCount * kCount * 20);
}

// A trial leaves the policy as it is for the next one, also when it breaks off.
TEST_F(LintMarks, TriesEachMarkOnThePolicyWithAllOthers) {
    apply(kFilters);
    MarkTrial trial(store());
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(trial.changesTasks("\\S", "\\light", {"\\S", "\\T"}));
        EXPECT_FALSE(trial.changesTasks("\\T", "\\heavy", {"\\S", "\\T"}));
        EXPECT_FALSE(trial.changesTasks("\\S", "\\light", {"\\T"}));
        EXPECT_TRUE(trial.changesTasks("\\S", "\\plain", {"\\S"}));
    }
}

TEST_F(LintMarks, TriesOnAfterATrialThatFailed) {
    apply(kFilters);
    uint64_t failed = 0;
    for (uint64_t call = 1;; ++call) {
        MarkTrial trial(store());
        EXPECT_FALSE(trial.changesTasks("\\T", "\\heavy", {"\\T"}));
        zxtest::failStoreCall(call, ZXREG_E_IO);
        bool isAnswered = false;
        try {
            const zxtest::CountedCalls counted;
            isAnswered = !trial.changesTasks("\\S", "\\light", {"\\S"});
        } catch (const StoreError&) {
            ++failed;
        }
        if (!zxtest::storeCallFailed()) break;
        const std::string where = zxtest::failedStoreCall();
        zxtest::failNoStoreCall();
        // Matching passes over some failures, and asks for other tasks then.
        if (isAnswered) continue;
        ASSERT_TRUE(trial.changesTasks("\\S", "\\light", {"\\S"})) << call << ": " << where;
        ASSERT_FALSE(trial.changesTasks("\\T", "\\heavy", {"\\T"})) << call << ": " << where;
    }
    EXPECT_GT(failed, 20U);
}

TEST_F(LintMarks, SaysThatMarksAndAFilterTogetherLeaveATaskOut) {
    const std::string head = R"(zxpolicy: 1
exclusiveFilters: [{filter: 26, priority: asc}]
root:
  conditions: [{sender: "*", receiver: "*"}]
  tasks: [{name: c, filter: 26, overridable: true}, {name: d, filter: 26, overridable: true}]
  rules:
    - {name: S, conditions: [{sender: "*", receiver: "*@s.c"}], inactive: )";
    apply(head + "[]}\n");
    EXPECT_THAT(found("dropped-task"),
                ElementsAre("task \\d: for every mail the exclusive filter 26 leaves it out in favour of \\c"));
    apply(head + "['\\c', '\\d']}\n");
    EXPECT_THAT(found("dropped-task"),
                ElementsAre("task \\d: for every mail inactive marks or the exclusive filter 26 leave it out, the "
                            "filter in favour of \\c"));
    apply(head + "['\\c']}\n");
    EXPECT_THAT(found("dropped-task"), IsEmpty());
}

}  // namespace tool
