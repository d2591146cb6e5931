// Explained matches beside a store that fails: what differs from the match without a failure is told, and being
// watched asks the store for nothing more.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "fault/scenario.h"
#include "zxpolicy_explain.h"

namespace zxtest {

namespace {

struct Told {
    std::vector<std::string> failures;  // of the steps, as texts
    std::string answer;
    int result = ZXPOL_S_OK;
};

void observe(void* context, const _ZxPolMatchStep* step) {
    if (ZX_FAILURE(step->result) == 0) return;
    static_cast<Told*>(context)->failures.push_back(std::to_string(step->kind) + " " +
                                                    (step->rulePath != nullptr ? step->rulePath : "-"));
}

void noteAnswer(_ZxPolMatchPair* pairs, uint32_t count, Told& told) {
    for (uint32_t i = 0; i < count; ++i) {
        told.answer += pairs[i].rulePath + std::string(":");
        for (char** receiver = pairs[i].receivers; *receiver != nullptr; ++receiver)
            told.answer += *receiver + std::string(" ");
        told.answer += std::to_string(pairs[i].taskCount) + "\n";
    }
    zxpol_freeMatchPair(pairs, count, nullptr);
}

const char* kReceivers[] = {"x@x.example", "y@y.example", "carol@z.example", nullptr};

Told plain(World& world, uint32_t mode) {
    Told told;
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_matchRuleByMailInfoEx, world.ruleHive, world.listHive, mode, "bob@a.example", kReceivers, &pairs, &count,
        &told.result);
    noteAnswer(pairs, count, told);
    return told;
}

Told explained(World& world, uint32_t mode) {
    Told told;
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_explainMatch, world.ruleHive, world.listHive, mode, "bob@a.example", kReceivers, &observe,
        static_cast<void*>(&told), &pairs, &count, &told.result);
    noteAnswer(pairs, count, told);
    return told;
}

// A rule or task whose position cannot be read, for which its key is opened, is not there; a task's flag that cannot be
// read is what stands for it.
bool isUntold(const std::string& call) {
    const std::string word = call.substr(call.find(' ') + 1);
    if (call.rfind("queryValue ", 0) == 0)
        return word == "order" || word == "filter" || word == "enable" || word == "overridable";
    return call.rfind("openKey ", 0) == 0;
}

class ExplainedMatch : public testing::TestWithParam<uint32_t> {
protected:
    void TearDown() override { resetFaultStore(); }
};
INSTANTIATE_TEST_SUITE_P(Modes, ExplainedMatch, testing::Values(0u, 1u));

}  // namespace

TEST_P(ExplainedMatch, AsksTheStoreForNothingMore) {
    World world(Start::policy);
    plain(world, GetParam());
    failNoStoreCall();
    const Told unwatched = plain(world, GetParam());
    const uint64_t calls = countedStoreCalls();
    failNoStoreCall();
    const Told watched = explained(world, GetParam());
    EXPECT_EQ(calls, countedStoreCalls());
    EXPECT_GT(calls, 50u);
    EXPECT_EQ(unwatched.answer, watched.answer);
}

TEST_P(ExplainedMatch, TellsEveryFailureThatChangesItsAnswer) {
    std::string clean;
    {
        World world(Start::policy);
        clean = explained(world, GetParam()).answer;
    }
    size_t changed = 0;
    std::set<std::string> told;
    size_t silent = 0;
    for (uint64_t call = 1;; ++call) {
        World world(Start::policy);
        failStoreCall(call, ZXREG_E_IO);
        const Told watched = explained(world, GetParam());
        const bool hasFailed = storeCallFailed();
        const std::string where = failedStoreCall();
        failStoreCall(call, ZXREG_E_IO);
        const Told unwatched = plain(world, GetParam());
        failNoStoreCall();
        EXPECT_EQ(unwatched.result, watched.result) << where;
        EXPECT_EQ(unwatched.answer, watched.answer) << where;
        if (!hasFailed) break;
        told.insert(watched.failures.begin(), watched.failures.end());
        if (watched.result < 0 || watched.answer == clean) continue;
        ++changed;
        if (!watched.failures.empty()) continue;
        ++silent;
        EXPECT_TRUE(isUntold(where)) << where;
    }
    EXPECT_GT(changed, 3u);
    const std::string passedOver = std::to_string(ZXPOL_STEP_PASSED_OVER) + " ";
    for (const char* what : {"-", "\\", "\\A", "\\A\\B"})
        EXPECT_EQ(1u, told.count(passedOver + what)) << what;
    EXPECT_LT(silent, changed);
}

}  // namespace zxtest
