// Every call of the store failing once, with every kind of failure: the books stay exact, the result is the one that
// is documented, and the store holds what it held at that moment of a run in which nothing fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "fault/clean_run.h"
#include "fault/figures.h"
#include "support/experiment.h"

namespace {

using namespace zxtest;

struct Failure {
    const char* name;
    int code;
};

constexpr Failure kFailures[] = {
    {"I/O", ZXREG_E_IO},
    {"not found", ZXREG_E_NOT_FOUND},
    {"too small", ZXREG_E_BUFFER_TOO_SMALL},
    {"no more items", ZXREG_E_NO_MORE_ITEMS},
    {"out of memory", ZXREG_E_OUT_OF_MEMORY},
};

// A call of the interface with more store calls than this is not run with every failure at each of them, but in the
// long form: then each store call fails in one or two ways, which go round.
#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kFewCalls = 0;
#else
constexpr uint64_t kFewCalls = 100;
#endif
constexpr uint64_t kShare = 3;

bool startsWithOneOf(const std::string& call, std::initializer_list<const char*> operations) {
    return std::any_of(operations.begin(), operations.end(),
                       [&](const char* operation) { return call.rfind(operation, 0) == 0; });
}

// Whether the failure says that something is absent which is there, or that an enumeration is at its end which is not:
// no caller can tell. What is read for each item of an enumeration may end it, too.
bool isAbsence(const std::string& call, int code) {
    if (code == ZXREG_E_NO_MORE_ITEMS) return startsWithOneOf(call, {"enum", "openKey", "queryValue"});
    if (code != ZXREG_E_NOT_FOUND) return false;
    return startsWithOneOf(call, {"openKey", "enumSubkey", "queryValue", "deleteValue", "deleteKey"});
}

// A run with the call and what came of it.
struct Attempt {
    Outcome outcome;
    std::string content;
    std::string failedCall;
};

class StoreFault : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override { resetFaultStore(); }

    // Runs the call with its `call`-th store call failing, and again without.
    void runFaulty(uint64_t call, const Failure& failure, const CleanRun& clean) {
        const std::unique_ptr<World> world = worldOf(GetParam());
        failStoreCall(call, failure.code);
        Attempt run;
        run.outcome = GetParam().act(*world);
        const bool happened = storeCallFailed();
        run.failedCall = failedStoreCall();
        failNoStoreCall();
        SCOPED_TRACE("call " + std::to_string(call) + " (" + run.failedCall + ") failing with " + failure.name);
        ASSERT_TRUE(happened);
        figures().storeCallsFailed += 1;
        EXPECT_EQ(0, openStoreUpdates());
        EXPECT_EQ("", run.outcome.violation);
        run.content = world->content();
        const bool isBelieved = isAbsence(run.failedCall, failure.code);
        const bool isPlain = isOfAFailure(run, failure, call, clean);
        if (!isPlain) checkPassedOver(run, failure, clean, isBelieved);
        // A success that passed something over gives nobody a reason to call again.
        const bool isDone = !isPlain && ZX_SUCCESS(run.outcome.result) != 0;
        if (!isBelieved) checkLists(*world);
        checkRetry(*world, clean, isBelieved, isDone);
        world->close();
        EXPECT_EQ("", troubleInBooks());
    }

    // What a site of the scenario lists without need hides a failure some day.
    void checkThatSitesAreNeeded() const {
        for (size_t at = 0; at < GetParam().passedOver.size(); ++at)
            EXPECT_EQ(1u, _needed.count(at)) << GetParam().passedOver[at].call << " is never passed over";
    }

    // The addresses that the lists have must be the stored ones. Moving addresses forward is given up when it fails,
    // which may leave one in two values.
    static void checkLists(const World& world) {
        if (!world.hasNormalLists()) return;
        EXPECT_EQ("", world.listTrouble());
        if (GetParam().retry != Retry::mayNotFind) {
            EXPECT_EQ("", world.listWithTwins());
        }
    }

private:
    // Whether nothing came of the failure, or the call reported it and stopped there.
    static bool isOfAFailure(const Attempt& run, const Failure& failure, uint64_t call, const CleanRun& clean) {
        const bool isWhole = run.outcome.result == clean.outcome.result && run.content == clean.content;
        if (isWhole && run.outcome.answer == clean.outcome.answer) return true;
        if (run.outcome.result != failure.code) return false;
        // What an update wrote that could not be ended is not kept; what was written around it is.
        const bool isUpdate = run.failedCall.rfind("endUpdate", 0) == 0;
        return isUpdate ? clean.passesThrough(run.content) : run.content == clean.stateBefore(call);
    }

    // The interface must pass the failure over by design, and must not make up anything then.
    void checkPassedOver(const Attempt& run, const Failure& failure, const CleanRun& clean, bool isBelieved) {
        const Sites& sites = GetParam().passedOver;
        bool isByDesign = isBelieved;
        for (size_t at = 0; at < sites.size(); ++at) {
            if (!isAt(sites[at], run.failedCall)) continue;
            isByDesign = true;
            _needed.insert(at);
        }
        EXPECT_TRUE(isByDesign) << "result " << std::hex << run.outcome.result << ", answer " << run.outcome.answer
                                << " instead of " << clean.outcome.answer << "; " << clean.differenceTo(run.content);
        if (!isBelieved) {
            EXPECT_EQ("", clean.foreignLine(run.content));
        }
        const int result = run.outcome.result;
        const bool isKnown = result == failure.code || result == clean.outcome.result || result == ZXPOL_S_OK ||
                             result == ZXPOL_E_NOT_FOUND || result == ZXPOL_E_EXCEPTION || result == ZXREG_E_NOT_EMPTY;
        EXPECT_TRUE(isKnown || isBelieved) << "result " << std::hex << result;
    }

    // The same call in the same world, without a failure.
    static void checkRetry(World& world, const CleanRun& clean, bool isBelieved, bool isDone) {
        const Outcome again = GetParam().act(world);
        EXPECT_EQ("", again.violation);
        const bool isMissing = (static_cast<uint32_t>(again.result) & 0xffffu) == 0x1804;
        if (GetParam().retry == Retry::mayNotFind && isMissing) return;
        if (GetParam().retry == Retry::stamped) return;
        EXPECT_TRUE(again.result == clean.outcome.result || again.result == clean.repeatedResult)
            << "the next call gives " << std::hex << again.result;
        if (isBelieved) return;
        if (world.hasNormalLists()) {
            EXPECT_EQ(clean.addresses, world.listAddresses()) << "after the next call";
        }
        const std::string content = world.content();
        if (isDone || GetParam().retry != Retry::completes || content == clean.repeated) return;
        EXPECT_EQ("", clean.differenceTo(content)) << "after the next call";
    }

    std::set<size_t> _needed;
};

TEST_P(StoreFault, KeepsTheBooksExactAndLosesNothingSilently) {
    const CleanRun clean(GetParam());
    ASSERT_EQ("", troubleInBooks());
    ASSERT_EQ(resultOfCleanRun(GetParam()), clean.outcome.result);
    ASSERT_EQ("", clean.outcome.violation);
    figures().scenarios += 1;
    const bool isShort = !isLong() && clean.calls > kFewCalls;
    for (uint64_t call = 1; call <= clean.calls; ++call) {
        for (uint64_t i = 0; i < std::size(kFailures); ++i) {
            if (isShort && (i + call) % kShare != 0) continue;
            runFaulty(call, kFailures[i], clean);
            if (HasFatalFailure()) return;
        }
    }
    if (!isShort) checkThatSitesAreNeeded();
}

INSTANTIATE_TEST_SUITE_P(Interface, StoreFault, testing::ValuesIn(allScenarios()),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

}  // namespace
