// Puts the steps of a match together to an explanation.
#pragma once

#include <exception>

#include "explanation.h"

namespace tool {

class StepRecorder {
public:
    explicit StepRecorder(Explanation& explanation) : _explanation(explanation) {}

    // As zxpol_explainMatch calls it, with a recorder for its context.
    static void observe(void* context, const _ZxPolMatchStep* step);

    // Throws what recording threw: nothing may be thrown through the library.
    void rethrow() const {
        if (_thrown) std::rethrow_exception(_thrown);
    }

private:
    void record(const _ZxPolMatchStep& step);
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
    std::exception_ptr _thrown;
};

}  // namespace tool
