#include "decisions/condition_watch.h"

namespace tool {

void ConditionWatch::record(const _ZxPolMatchStep& step) {
    if (step.kind == ZXPOL_STEP_RULE_CHECKED && step.isMatched != 0) _matched[step.rulePath] = step.conditionIndex;
    if (step.kind == ZXPOL_STEP_RECEIVER_DECIDED && step.isMatched != 0)
        _conditions[step.receiverIndex] = _matched[step.rulePath];
}

}  // namespace tool
