#include "condition_watch.h"

namespace tool {

void ConditionWatch::see(void* watch, const _ZxPolMatchStep* step) {
    auto& self = *static_cast<ConditionWatch*>(watch);
    if (step->kind == ZXPOL_STEP_RULE_CHECKED && step->isMatched != 0)
        self._matched[step->rulePath] = step->conditionIndex;
    if (step->kind == ZXPOL_STEP_RECEIVER_DECIDED && step->isMatched != 0)
        self._conditions[step->receiverIndex] = self._matched[step->rulePath];
}

}  // namespace tool
