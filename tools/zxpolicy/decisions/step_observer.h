// An observer of the steps of a match.
#pragma once

#include <exception>

#include "zxpolicy_explain.h"

namespace tool {

// What recording a step throws is kept, and no further step recorded: nothing may be thrown through the library.
class StepObserver {
public:
    // As zxpol_explainMatch calls it, with the observer's context().
    static void observe(void* context, const _ZxPolMatchStep* step) {
        auto& observer = *static_cast<StepObserver*>(context);
        if (observer._thrown) return;
        try {
            observer.record(*step);
        } catch (...) {
            observer._thrown = std::current_exception();
        }
    }
    void* context() { return this; }

    // Throws what recording threw.
    void rethrow() const {
        if (_thrown) std::rethrow_exception(_thrown);
    }

protected:
    StepObserver() = default;
    ~StepObserver() = default;
    StepObserver(const StepObserver&) = default;
    StepObserver& operator=(const StepObserver&) = default;

private:
    virtual void record(const _ZxPolMatchStep& step) = 0;

    std::exception_ptr _thrown;
};

}  // namespace tool
