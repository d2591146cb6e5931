#include "explanation/step_recorder.h"

#include <algorithm>

namespace tool {

namespace {

std::optional<std::string> optionalText(const char* text) {
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace

std::vector<std::string> Collection::taken() const {
    std::vector<std::string> names;
    for (const TaskVisit& task : tasks)
        if ((task.fate == ZXPOL_FATE_TAKEN || task.fate == ZXPOL_FATE_REPLACES) && !task.replacedBy)
            names.push_back(task.path);
    return names;
}

void StepRecorder::record(const _ZxPolMatchStep& step) {
    switch (step.kind) {
        case ZXPOL_STEP_RESTART:
            return restart();
        case ZXPOL_STEP_RECEIVER:
            _explanation.walks.push_back({step.receiver, {}, {}, ZXPOL_S_OK});
            return;
        case ZXPOL_STEP_RULE:
            beginVisit(step, RuleVisit::Kind::Checked);
            _isInRule = true;
            return;
        case ZXPOL_STEP_SIDE:
            return addSide(step);
        case ZXPOL_STEP_RULE_CHECKED:
            return finishRule(step);
        case ZXPOL_STEP_CHOICE:
            return choose(step);
        case ZXPOL_STEP_RECEIVER_DECIDED:
            return finishWalk(step);
        case ZXPOL_STEP_COLLECTION:
            _explanation.collections.push_back({step.rulePath, {}, {}});
            return;
        case ZXPOL_STEP_TASK:
            return addTask(step);
        case ZXPOL_STEP_PASSED_OVER:
            return passOver(step);
    }
}

void StepRecorder::restart() {
    _explanation.walks.clear();
    _explanation.collections.clear();
    _explanation.unreadFilters = ZXPOL_S_OK;
    ++_explanation.restarts;
    _isInRule = false;
}

RuleVisit& StepRecorder::beginVisit(const _ZxPolMatchStep& step, RuleVisit::Kind kind) {
    RuleVisit& begun = _explanation.walks.back().rules.emplace_back();
    begun.kind = kind;
    begun.path = step.rulePath;
    return begun;
}

void StepRecorder::addSide(const _ZxPolMatchStep& step) {
    std::vector<ConditionTest>& conditions = visit().conditions;
    if (conditions.empty() || conditions.back().index != step.conditionIndex)
        conditions.push_back({step.conditionIndex, {}});
    conditions.back().sides.push_back({step.side, step.pattern, step.address, step.isMatched != 0, step.weight,
                                       optionalText(step.entry), step.result});
}

void StepRecorder::finishRule(const _ZxPolMatchStep& step) {
    RuleVisit& checked = visit();
    checked.isMatched = step.isMatched != 0;
    checked.decisive = step.conditionIndex;
    checked.weights = {step.senderWeight, step.receiverWeight};
    checked.result = step.result;
    _isInRule = false;
}

void StepRecorder::choose(const _ZxPolMatchStep& step) {
    visit().fate = step.fate;
    visit().other = optionalText(step.otherPath);
}

void StepRecorder::finishWalk(const _ZxPolMatchStep& step) {
    Walk& walk = _explanation.walks.back();
    walk.rule = optionalText(step.rulePath);
    walk.result = step.result;
    // In first match the failure to enumerate ends the walk, and is what was told last.
    if (ZX_FAILURE(step.result) && !walk.rules.empty() && visit().kind == RuleVisit::Kind::Unopened)
        visit().kind = RuleVisit::Kind::UnknownChildren;
}

void StepRecorder::addTask(const _ZxPolMatchStep& step) {
    std::vector<TaskVisit>& tasks = _explanation.collections.back().tasks;
    if (step.fate == ZXPOL_FATE_REPLACES)
        for (TaskVisit& earlier : tasks)
            if (earlier.path == step.otherPath) earlier.replacedBy = step.taskPath;
    tasks.push_back({step.taskPath,
                     step.fate,
                     step.filter,
                     step.enable != 0,
                     step.overridable != 0,
                     optionalText(step.otherPath),
                     optionalText(step.mark),
                     optionalText(step.markRule),
                     {}});
}

void StepRecorder::passOver(const _ZxPolMatchStep& step) {
    if (step.rulePath == nullptr) {
        _explanation.unreadFilters = step.result;
    } else if (!_explanation.collections.empty()) {
        _explanation.collections.back().unreadMarks.push_back({step.rulePath, step.result});
    } else if (_isInRule) {
        visit().unread = step.result;
    } else {
        const std::vector<RuleVisit>& rules = _explanation.walks.back().rules;
        const bool isKnown = std::any_of(rules.begin(), rules.end(),
                                         [&](const RuleVisit& earlier) { return earlier.path == step.rulePath; });
        beginVisit(step, isKnown ? RuleVisit::Kind::UnknownChildren : RuleVisit::Kind::Unopened).result = step.result;
    }
}

}  // namespace tool
