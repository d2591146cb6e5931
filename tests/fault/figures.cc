#include "fault/figures.h"

#include <gtest/gtest.h>

#include "support/experiment.h"

namespace zxtest {

namespace {

class PrintFigures : public testing::Environment {
public:
    void TearDown() override {
        figure("faults", "scenarios run", figures().scenarios);
        figure("faults", "store calls failed", figures().storeCallsFailed);
        figure("faults", "allocations failed", figures().allocationsFailed);
    }
};

const testing::Environment* const kPrinter = testing::AddGlobalTestEnvironment(new PrintFigures);

}  // namespace

FaultFigures& figures() {
    static FaultFigures all;
    return all;
}

}  // namespace zxtest
