// The steps of an explained match, each as a line of text.
#pragma once

#include <string>
#include <vector>

#include "support/list_fixture.h"
#include "zxpolicy_explain.h"

namespace zxtest {

inline std::string fateName(ZxPolMatchFate fate) {
    const char* const names[] = {"none",     "better",   "not better", "unbeatable", "taken",
                                 "replaces", "disabled", "inactive",   "held"};
    return fate < std::size(names) ? names[fate] : "unknown";
}

inline std::string textOr(const char* text, const std::string& other = "-") {
    return text != nullptr ? text : other;
}

// Only what the kind of the step names; that the rest is empty is for namedFields to tell.
inline std::string lineOfStep(const _ZxPolMatchStep& step) {
    const std::string weights = std::to_string(step.senderWeight) + "," + std::to_string(step.receiverWeight);
    const std::string failure = step.result < 0 ? " failed " + codeText(step.result) : "";
    const std::string answer = step.isMatched != 0 ? " yes" : " no";
    switch (step.kind) {
        case ZXPOL_STEP_RESTART:
            return "restart";
        case ZXPOL_STEP_RECEIVER:
            return "receiver " + std::to_string(step.receiverIndex) + " " + textOr(step.receiver);
        case ZXPOL_STEP_RULE:
            return "rule " + textOr(step.rulePath);
        case ZXPOL_STEP_SIDE:
            return textOr(step.rulePath) + " " + std::to_string(step.conditionIndex) +
                   (step.side == ZXPOL_SIDE_RECEIVER ? " receiver " : " sender ") + textOr(step.address) + " in " +
                   textOr(step.pattern) + answer + (step.isMatched != 0 ? " " + std::to_string(step.weight) : "") +
                   (step.entry != nullptr ? " by " + textOr(step.entry) : "") + failure;
        case ZXPOL_STEP_RULE_CHECKED:
            return "checked " + textOr(step.rulePath) + answer +
                   (step.isMatched != 0 ? " " + std::to_string(step.conditionIndex) + " " + weights : "") + failure;
        case ZXPOL_STEP_CHOICE:
            return "choice " + textOr(step.rulePath) + " " + fateName(step.fate) + " " + weights + " " +
                   textOr(step.otherPath);
        case ZXPOL_STEP_RECEIVER_DECIDED:
            return "decided " + std::to_string(step.receiverIndex) + " " + textOr(step.receiver) + answer + " " +
                   textOr(step.rulePath) + failure;
        case ZXPOL_STEP_COLLECTION:
            return "tasks of " + textOr(step.rulePath);
        case ZXPOL_STEP_TASK:
            return textOr(step.rulePath) + " task " + textOr(step.taskPath) + " " + std::to_string(step.filter) + " " +
                   std::to_string(step.enable) + std::to_string(step.overridable) + " " + fateName(step.fate) + " " +
                   textOr(step.otherPath) + (step.mark != nullptr ? " by " + textOr(step.mark) : "") +
                   (step.markRule != nullptr ? " in " + textOr(step.markRule) : "");
        case ZXPOL_STEP_PASSED_OVER:
            return "passed over " + textOr(step.rulePath) + failure;
    }
    return "unknown";
}

// A step again, with nothing but what its kind names.
inline _ZxPolMatchStep namedFields(const _ZxPolMatchStep& step) {
    _ZxPolMatchStep named{};
    named.kind = step.kind;
    const auto keep = [&](auto... fields) { ((named.*fields = step.*fields), ...); };
    using Step = _ZxPolMatchStep;
    switch (step.kind) {
        case ZXPOL_STEP_RESTART:
            break;
        case ZXPOL_STEP_RECEIVER_DECIDED:
            keep(&Step::isMatched, &Step::result);
            keep(&Step::rulePath);
            [[fallthrough]];
        case ZXPOL_STEP_RECEIVER:
            keep(&Step::receiver, &Step::receiverIndex);
            break;
        case ZXPOL_STEP_RULE:
        case ZXPOL_STEP_COLLECTION:
            keep(&Step::rulePath);
            break;
        case ZXPOL_STEP_SIDE:
            keep(&Step::rulePath, &Step::conditionIndex, &Step::side, &Step::pattern, &Step::address, &Step::isMatched,
                 &Step::weight, &Step::entry, &Step::result);
            break;
        case ZXPOL_STEP_RULE_CHECKED:
            keep(&Step::rulePath, &Step::isMatched, &Step::conditionIndex, &Step::senderWeight, &Step::receiverWeight,
                 &Step::result);
            break;
        case ZXPOL_STEP_CHOICE:
            keep(&Step::rulePath, &Step::fate, &Step::senderWeight, &Step::receiverWeight, &Step::otherPath);
            break;
        case ZXPOL_STEP_TASK:
            keep(&Step::rulePath, &Step::taskPath, &Step::filter, &Step::enable, &Step::overridable, &Step::fate,
                 &Step::otherPath, &Step::mark, &Step::markRule);
            break;
        case ZXPOL_STEP_PASSED_OVER:
            keep(&Step::rulePath, &Step::result);
            break;
    }
    return named;
}

// Records the steps that it is given as the observer's context.
class RecordedSteps {
public:
    static void observe(void* context, const _ZxPolMatchStep* step) {
        const _ZxPolMatchStep named = namedFields(*step);
        EXPECT_EQ(0, std::memcmp(&named, step, sizeof named)) << "more than the kind names: " << lineOfStep(*step);
        static_cast<RecordedSteps*>(context)->_lines.push_back(lineOfStep(*step));
    }

    const std::vector<std::string>& lines() const { return _lines; }

private:
    std::vector<std::string> _lines;
};

// Tests of explanations: what a match tells, which is always held against the match that nobody watches.
class ExplainTest : public ListTest {
protected:
    std::vector<std::string> explained(const std::string& sender, std::initializer_list<const char*> receivers,
                                       uint32_t mode = 0) const {
        std::vector<const char*> list(receivers);
        list.push_back(nullptr);
        RecordedSteps steps;
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        MatchResult result;
        zxpol_explainMatch(ruleHive(), listHive(), mode, sender.c_str(), list.data(), &RecordedSteps::observe, &steps,
                           &pairs, &count, &result.code);
        for (uint32_t at = 0; at < count; ++at)
            result.lines.push_back(lineOf(pairs[at]));
        int error = ZXPOL_S_OK;
        zxpol_freeMatchPair(pairs, count, &error);
        const MatchResult plain = match(sender, receivers, mode);
        EXPECT_CODE(plain.code, result.code);
        EXPECT_EQ(plain.lines, result.lines);
        return steps.lines();
    }
};

}  // namespace zxtest
