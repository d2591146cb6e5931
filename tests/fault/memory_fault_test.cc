// Every allocation failing once: the call reports it, leaves no key open and no update begun, and the store holds what
// it held at some moment of a run in which nothing fails.
#include <gtest/gtest.h>

#include "fault/clean_run.h"
#include "fault/figures.h"

namespace {

using namespace zxtest;

class MemoryFault : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override { resetFaultStore(); }

    // Runs the call with its `call`-th allocation failing; false when it makes fewer.
    static bool runFaulty(uint64_t call, bool inStore, const CleanRun& clean) {
        SCOPED_TRACE("allocation " + std::to_string(call) + (inStore ? ", the store's included" : ""));
        const std::unique_ptr<World> world = worldOf(GetParam());
        failAllocation(call, inStore);
        const Outcome outcome = GetParam().act(*world);
        const bool happened = allocationFailed();
        failAllocation(0);
        figures().allocationsFailed += happened ? 1 : 0;
        EXPECT_EQ("", outcome.violation);
        EXPECT_EQ(0, openStoreUpdates());
        checkLists(*world);
        checkResult(outcome, *world, inStore, clean);
        const Outcome again = GetParam().act(*world);
        EXPECT_EQ("", again.violation) << "the next call";
        checkNext(again, clean);
        checkLists(*world);
        if (world->hasNormalLists()) {
            EXPECT_EQ(clean.addresses, world->listAddresses()) << "the next call";
        }
        world->close();
        EXPECT_EQ("", troubleInBooks());
        return happened;
    }

private:
    // With memory again the same call succeeds, or finds its work done already.
    static void checkNext(const Outcome& again, const CleanRun& clean) {
        const bool isMissing = (static_cast<uint32_t>(again.result) & 0xffffu) == 0x1804;
        if (GetParam().retry == Retry::stamped || (GetParam().retry == Retry::mayNotFind && isMissing)) return;
        EXPECT_TRUE(again.result == clean.outcome.result || again.result == clean.repeatedResult)
            << "the next call gives " << std::hex << again.result;
    }

    static void checkLists(const World& world) {
        if (!world.hasNormalLists()) return;
        EXPECT_EQ("", world.listTrouble());
    }

    // What is reported is the lack of memory, or what the call reports without it too. The store's own lack may be
    // passed over where its other failures are.
    static void checkResult(const Outcome& outcome, const World& world, bool inStore, const CleanRun& clean) {
        EXPECT_EQ("", clean.foreignLine(world.content()));
        if (inStore) return;
        const bool isReported = outcome.result == ZXPOL_E_OUT_OF_MEMORY || outcome.result == ZXPOL_E_EXCEPTION;
        EXPECT_TRUE(isReported || outcome.result == clean.outcome.result) << std::hex << outcome.result;
        EXPECT_TRUE(clean.passesThrough(world.content())) << clean.differenceTo(world.content());
        if (isReported || GetParam().retry == Retry::mayNotFind) return;
        EXPECT_EQ("", clean.differenceTo(world.content()));
    }
};

TEST_P(MemoryFault, ReportsTheLackOfMemoryAndLeavesNothingOpen) {
    const CleanRun clean(GetParam());
    for (const bool inStore : {false, true}) {
        uint64_t call = 1;
        while (runFaulty(call, inStore, clean) && !HasFatalFailure())
            ++call;
    }
}

INSTANTIATE_TEST_SUITE_P(Interface, MemoryFault, testing::ValuesIn(allScenarios()),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

}  // namespace
