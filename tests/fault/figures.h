// What was counted while faults were injected, printed when the program ends.
#pragma once

#include <cstdint>

namespace zxtest {

struct FaultFigures {
    uint64_t scenarios = 0;
    uint64_t storeCallsFailed = 0;
    uint64_t allocationsFailed = 0;
};

FaultFigures& figures();

}  // namespace zxtest
