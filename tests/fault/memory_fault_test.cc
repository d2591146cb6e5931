// Every allocation failing once: the call reports it, and leaves no key open and no update begun.
#include <gtest/gtest.h>

#include <iostream>

#include "fault/scenario.h"

namespace {

using namespace zxtest;

class MemoryFault : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override { resetFaultStore(); }

    // Runs the call with its `call`-th allocation failing; false when it makes fewer.
    bool runFaulty(uint64_t call, bool inStore) {
        World world(GetParam().start);
        failAllocation(call, inStore);
        const Outcome outcome = GetParam().act(world);
        const bool happened = allocationFailed();
        failAllocation(0);
        EXPECT_EQ("", outcome.violation) << "allocation " << call;
        EXPECT_EQ(0, openStoreUpdates()) << "allocation " << call;
        if (GetParam().start == Start::lists) {
            EXPECT_EQ("", world.listTrouble()) << "allocation " << call;
        }
        const Outcome again = GetParam().act(world);
        EXPECT_EQ("", again.violation) << "after the failing allocation " << call;
        if (GetParam().start == Start::lists) {
            EXPECT_EQ("", world.listTrouble()) << "after the failing allocation " << call;
            EXPECT_EQ(_cleanAddresses, world.listAddresses()) << "after the failing allocation " << call;
        }
        world.close();
        EXPECT_EQ(std::vector<std::string>(), storeViolations()) << "allocation " << call;
        EXPECT_EQ(std::vector<std::string>(), openStoreKeys()) << "never closed: allocation " << call;
        if (happened && !inStore && ZX_FAILURE(outcome.result) != 0) checkResult(outcome.result, call);
        resetFaultStore();
        return happened;
    }

    // What is reported is the lack of memory, or what the call reports without it too.
    void checkResult(int result, uint64_t call) {
        EXPECT_TRUE(result == ZXPOL_E_OUT_OF_MEMORY || result == _clean) << "allocation " << call << ": " << result;
    }

    int _clean = ZXPOL_S_OK;
    std::string _cleanAddresses;  // of the normal lists
};

TEST_P(MemoryFault, ReportsTheLackOfMemoryAndLeavesNothingOpen) {
    {
        World world(GetParam().start);
        _clean = GetParam().act(world).result;
        if (GetParam().start == Start::lists) _cleanAddresses = world.listAddresses();
    }
    for (const bool inStore : {false, true}) {
        uint64_t call = 1;
        while (runFaulty(call, inStore) && !HasFatalFailure())
            ++call;
        std::cout << GetParam().name << (inStore ? ", the store's included: " : ": ") << call - 1
                  << " allocations failed\n";
    }
}

INSTANTIATE_TEST_SUITE_P(Interface, MemoryFault, testing::ValuesIn(allScenarios()),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

}  // namespace
