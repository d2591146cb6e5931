// Which condition of its rule takes a receiver.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "decisions/step_observer.h"

namespace tool {

// Watches a match.
class ConditionWatch final : public StepObserver {
public:
    explicit ConditionWatch(size_t receivers) : _conditions(receivers) {}

    // The position of the condition that decided for the receiver at this index, when a rule took it.
    uint32_t conditionOf(size_t receiver) const { return _conditions[receiver]; }

private:
    void record(const _ZxPolMatchStep& step) override;

    std::map<std::string, uint32_t> _matched;  // by the rules that matched last; the one that decides is among them
    std::vector<uint32_t> _conditions;
};

}  // namespace tool
