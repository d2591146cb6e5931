// Steps of a match put together, as far as no store of our own leads to them, and how they are shown.
#include "explanation/step_recorder.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "explanation/explanation_report.h"

namespace tool {

namespace {

using testing::HasSubstr;

constexpr int kFailure = ZXREG_E_IO;

class StepRecorderTest : public testing::Test {
protected:
    template <class Fill>
    void tell(ZxPolMatchStepKind kind, Fill fill) {
        _ZxPolMatchStep step{};
        step.kind = kind;
        fill(step);
        StepRecorder::observe(_recorder.context(), &step);
    }
    void tell(ZxPolMatchStepKind kind, const char* rulePath = nullptr, int result = ZXPOL_S_OK) {
        tell(kind, [&](_ZxPolMatchStep& step) {
            step.rulePath = rulePath;
            step.result = result;
        });
    }
    void tellReceiver(ZxPolMatchStepKind kind, const char* rulePath = nullptr, int result = ZXPOL_S_OK) {
        tell(kind, [&](_ZxPolMatchStep& step) {
            step.receiver = "r@a.example";
            step.rulePath = rulePath;
            step.isMatched = rulePath != nullptr ? 1 : 0;
            step.result = result;
        });
    }
    void tellRule(const char* path) {
        tell(ZXPOL_STEP_RULE, path);
        tell(ZXPOL_STEP_RULE_CHECKED, path);
    }

    const Explanation& explanation() const { return _explanation; }
    const RuleVisit& visit(size_t index) const { return _explanation.walks.at(0).rules.at(index); }
    std::string text() const {
        std::ostringstream out;
        printText(out, _explanation, Colours(false), SIZE_MAX);
        return out.str();
    }
    nlohmann::json json() const {
        std::ostringstream out;
        printJson(out, _explanation);
        return nlohmann::json::parse(out.str());
    }

private:
    Explanation _explanation{};
    StepRecorder _recorder{_explanation};
};

}  // namespace

TEST_F(StepRecorderTest, ARestartMakesWhatWasToldVoid) {
    tell(ZXPOL_STEP_PASSED_OVER, nullptr, kFailure);
    tellReceiver(ZXPOL_STEP_RECEIVER);
    tellRule("\\A");
    tellReceiver(ZXPOL_STEP_RECEIVER_DECIDED, "\\A");
    tell(ZXPOL_STEP_COLLECTION, "\\A");
    tell(ZXPOL_STEP_RESTART);
    EXPECT_TRUE(explanation().walks.empty());
    EXPECT_TRUE(explanation().collections.empty());
    EXPECT_EQ(explanation().unreadFilters, ZXPOL_S_OK);
    EXPECT_EQ(json()["restarts"], 1);
    EXPECT_THAT(text(), HasSubstr("the policy changed meanwhile, and the match was begun anew\n"));
}

TEST_F(StepRecorderTest, ARuleThatCannotBeOpenedIsAStepOfItsOwn) {
    tellReceiver(ZXPOL_STEP_RECEIVER);
    tell(ZXPOL_STEP_PASSED_OVER, "\\A", kFailure);
    tellRule("\\");
    tellReceiver(ZXPOL_STEP_RECEIVER_DECIDED);
    EXPECT_EQ(visit(0).kind, RuleVisit::Kind::Unopened);
    EXPECT_EQ(visit(1).kind, RuleVisit::Kind::Checked);
    EXPECT_EQ(json()["receivers"][0]["rules"][0].dump(),
              R"({"failure":{"code":"0x81021901","name":"ZXREG_E_IO"},"rule":"\\A","step":"unopened"})");
    EXPECT_THAT(text(), HasSubstr("    \\A  cannot be opened, and is passed over: ZXREG_E_IO"));
}

TEST_F(StepRecorderTest, RulesThatCannotBeListedAreThoseBelowOneThatWasLookedAt) {
    tellReceiver(ZXPOL_STEP_RECEIVER);
    tellRule("\\");
    tell(ZXPOL_STEP_PASSED_OVER, "\\", kFailure);
    tellReceiver(ZXPOL_STEP_RECEIVER_DECIDED, "\\");
    EXPECT_EQ(visit(1).kind, RuleVisit::Kind::UnknownChildren);
    EXPECT_EQ(json()["receivers"][0]["rules"][1]["step"], "unknownChildren");
    EXPECT_THAT(text(), HasSubstr("the rules below it cannot be listed: ZXREG_E_IO"));
}

TEST_F(StepRecorderTest, RulesThatCannotBeListedEndAFirstMatch) {
    tellReceiver(ZXPOL_STEP_RECEIVER);
    tell(ZXPOL_STEP_PASSED_OVER, "\\A", kFailure);
    tellReceiver(ZXPOL_STEP_RECEIVER_DECIDED, nullptr, kFailure);
    EXPECT_EQ(visit(0).kind, RuleVisit::Kind::UnknownChildren);
    EXPECT_THAT(text(), HasSubstr("the match ends here: ZXREG_E_IO"));
}

TEST_F(StepRecorderTest, ConditionsMarksAndFiltersThatCannotBeReadAreShown) {
    tell(ZXPOL_STEP_PASSED_OVER, nullptr, kFailure);
    tellReceiver(ZXPOL_STEP_RECEIVER);
    tell(ZXPOL_STEP_RULE, "\\");
    tell(ZXPOL_STEP_PASSED_OVER, "\\", kFailure);
    tell(ZXPOL_STEP_RULE_CHECKED, "\\");
    tellReceiver(ZXPOL_STEP_RECEIVER_DECIDED, "\\");
    tell(ZXPOL_STEP_COLLECTION, "\\");
    tell(ZXPOL_STEP_PASSED_OVER, "\\", kFailure);
    EXPECT_EQ(visit(0).unread, kFailure);
    EXPECT_EQ(explanation().unreadFilters, kFailure);
    ASSERT_EQ(explanation().collections.at(0).unreadMarks.size(), 1U);
    const nlohmann::json told = json();
    EXPECT_EQ(told["unreadFilters"]["name"], "ZXREG_E_IO");
    EXPECT_EQ(told["receivers"][0]["rules"][0]["unreadConditions"]["name"], "ZXREG_E_IO");
    EXPECT_EQ(told["collections"][0]["unreadMarks"][0]["failure"]["name"], "ZXREG_E_IO");
    for (const char* line :
         {"no further exclusive filters can be read: ZXREG_E_IO", "no further conditions can be read: ZXREG_E_IO",
          "its marks cannot be read, and switch nothing off: ZXREG_E_IO"})
        EXPECT_THAT(text(), HasSubstr(line));
}

TEST_F(StepRecorderTest, ATaskWhoseFilterIsOfAnUnknownTypeOrWhoseNameIsTooLongIsLeftOut) {
    tell(ZXPOL_STEP_COLLECTION, "\\");
    for (const ZxPolMatchFate fate : {ZXPOL_FATE_HELD, ZXPOL_FATE_INACTIVE})
        tell(ZXPOL_STEP_TASK, [&](_ZxPolMatchStep& step) {
            step.rulePath = "\\";
            step.taskPath = "\\t";
            step.filter = 4;
            step.fate = fate;
        });
    EXPECT_TRUE(explanation().collections.at(0).taken().empty());
    EXPECT_THAT(text(), HasSubstr("  \\t  left out: exclusive filter 4 is of an unknown type\n"
                                  "  \\t  left out: its full name is too long\n"));
}

TEST_F(StepRecorderTest, NothingIsThrownThroughTheLibrary) {
    Explanation recorded{};
    StepRecorder recorder(recorded);
    _ZxPolMatchStep step{};
    step.kind = ZXPOL_STEP_RECEIVER;  // without a receiver
    EXPECT_NO_THROW(recorder.rethrow());
    EXPECT_NO_THROW(StepRecorder::observe(recorder.context(), &step));
    EXPECT_THROW(recorder.rethrow(), std::logic_error);
}

}  // namespace tool
