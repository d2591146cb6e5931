// Puts the steps of a match together to an explanation.
#pragma once

#include "decisions/step_observer.h"
#include "explanation/explanation.h"

namespace tool {

class StepRecorder final : public StepObserver {
public:
    explicit StepRecorder(Explanation& explanation) : _explanation(explanation) {}

private:
    void record(const _ZxPolMatchStep& step) override;
    void restart();
    void addSide(const _ZxPolMatchStep& step);
    void finishRule(const _ZxPolMatchStep& step);
    void choose(const _ZxPolMatchStep& step);
    void finishWalk(const _ZxPolMatchStep& step);
    void addTask(const _ZxPolMatchStep& step);
    void passOver(const _ZxPolMatchStep& step);
    RuleVisit& beginVisit(const _ZxPolMatchStep& step, RuleVisit::Kind kind);
    RuleVisit& visit() { return _explanation.walks.back().rules.back(); }

    Explanation& _explanation;
    bool _isInRule = false;
};

}  // namespace tool
