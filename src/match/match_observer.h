// ZxPolMatchObserver: is told the steps of a match as the matcher takes them.
#pragma once

#include "zxpolicy_explain.h"

/// Is told each step of a match, in order and in the thread that matches. It must not throw, nor change the policy, nor
/// use the hives of the match.
class ZXPOL_API ZxPolMatchObserver {
public:
    virtual ~ZxPolMatchObserver();

    /// The texts of the step live until this returns. ZXPOL_STEP_RESTART comes from zxpol_explainMatch alone: a matcher
    /// matches once.
    virtual void onStep(const _ZxPolMatchStep& step) = 0;
};
