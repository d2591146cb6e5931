// Every call of the store failing once, with every kind of failure: the books stay exact, nothing comes out half.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "fault/scenario.h"

namespace {

using namespace zxtest;

struct Failure {
    const char* name;
    int code;
    bool isLie;  // says that something is absent which is there: no caller can tell
};

constexpr Failure kFailures[] = {
    {"I/O", ZXREG_E_IO, false},
    {"not found", ZXREG_E_NOT_FOUND, true},
    {"too small", ZXREG_E_BUFFER_TOO_SMALL, false},
    {"no more items", ZXREG_E_NO_MORE_ITEMS, true},
    {"out of memory", ZXREG_E_OUT_OF_MEMORY, false},
};

uint64_t injectedInAll = 0;

// A run with the call and what came of it.
struct Attempt {
    Outcome outcome;
    std::string content;
    std::string addresses;  // of the normal lists
    bool failed = false;    // the planned failure happened
    std::string failedCall;
};

class StoreFault : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override { resetFaultStore(); }

    // Runs the call without failures.
    Attempt runClean() {
        World world(GetParam().start);
        failNoStoreCall();
        Attempt run;
        run.outcome = GetParam().act(world);
        _calls = countedStoreCalls();
        run.content = world.content();
        run.addresses = listsOf(world);
        world.close();
        checkBooks("without failures");
        return run;
    }

    // Runs the call with its `call`-th store call failing, and again without.
    void runFaulty(uint64_t call, const Failure& failure, const Attempt& clean) {
        World world(GetParam().start);
        failStoreCall(call, failure.code);
        Attempt run;
        run.outcome = GetParam().act(world);
        run.failed = storeCallFailed();
        run.failedCall = failedStoreCall();
        failNoStoreCall();
        const std::string what =
            "call " + std::to_string(call) + " (" + run.failedCall + ") failing with " + failure.name;
        SCOPED_TRACE(what);
        ASSERT_TRUE(run.failed);
        ++injectedInAll;
        EXPECT_EQ(0, openStoreUpdates());
        EXPECT_EQ("", run.outcome.violation);
        if (ZX_SUCCESS(run.outcome.result) != 0 || run.outcome.result == clean.outcome.result) {
            run.content = world.content();
            checkPassedOver(run, failure, clean);
        }
        if (!failure.isLie) listsOf(world);
        checkRetry(world, clean);
        if (!failure.isLie) {
            EXPECT_EQ(clean.addresses, listsOf(world)) << "after the next call";
        }
        world.close();
        checkBooks(what);
    }

    uint64_t calls() const { return _calls; }

    // The stored addresses of the normal lists, which must be those that the lists have. Moving addresses forward is
    // given up when it fails, which may leave one in two values.
    static std::string listsOf(const World& world) {
        if (GetParam().start != Start::lists) return "";
        EXPECT_EQ("", world.listTrouble());
        if (GetParam().retry == Retry::succeeds) {
            EXPECT_EQ("", world.listWithTwins());
        }
        return world.listAddresses();
    }

private:
    // A success in spite of the failure: the work must be done as without it, unless the interface passes this over.
    void checkPassedOver(const Attempt& run, const Failure& failure, const Attempt& clean) {
        if (failure.isLie) return;
        const auto& allowed = GetParam().passedOver;
        const bool isPassedOver = std::any_of(allowed.begin(), allowed.end(), [&](const std::string& site) {
            const bool isOpen = site.back() == '*';
            return isOpen ? run.failedCall.compare(0, site.size() - 1, site, 0, site.size() - 1) == 0
                          : run.failedCall == site;
        });
        if (isPassedOver) return;
        EXPECT_EQ(clean.outcome.answer, run.outcome.answer) << "lost without a failure";
        EXPECT_EQ(clean.content, run.content) << "lost without a failure";
    }

    // The same call in the same world, without a failure.
    void checkRetry(World& world, const Attempt& clean) {
        const Outcome again = GetParam().act(world);
        EXPECT_EQ("", again.violation);
        if (ZX_SUCCESS(again.result) != 0 || again.result == clean.outcome.result) return;
        const bool isMissing = (static_cast<uint32_t>(again.result) & 0xffffu) == 0x1804;
        EXPECT_TRUE(GetParam().retry == Retry::mayNotFind && isMissing)
            << "the next call fails with " << std::hex << again.result;
    }

    static void checkBooks(const std::string& what) {
        EXPECT_EQ(std::vector<std::string>(), storeViolations()) << what;
        EXPECT_EQ(std::vector<std::string>(), openStoreKeys()) << "never closed: " << what;
        EXPECT_EQ(0, openStoreUpdates()) << what;
        resetFaultStore();
    }

    uint64_t _calls = 0;
};

TEST_P(StoreFault, KeepsTheBooksExactAndLosesNothingSilently) {
    const Attempt clean = runClean();
    ASSERT_FALSE(HasFailure());
    for (const Failure& failure : kFailures) {
        for (uint64_t call = 1; call <= calls(); ++call) {
            runFaulty(call, failure, clean);
            if (HasFatalFailure()) return;
        }
    }
    std::cout << GetParam().name << ": " << calls() << " store calls; faults injected so far: " << injectedInAll
              << "\n";
}

INSTANTIATE_TEST_SUITE_P(Interface, StoreFault, testing::ValuesIn(allScenarios()),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

}  // namespace
