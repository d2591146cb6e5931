// Another process that edits the policy while mails are decided on.
#include <gtest/gtest.h>

#include <utility>

#include "support/experiment.h"
#include "threads/policy_client.h"
#include "threads/threads_fixture.h"

using threads::Addresses;
using threads::answerUnder;
using threads::Policy;
using threads::PolicyClient;
using threads::Worker;

namespace {

constexpr size_t kReceivers = 25;

class PolicyProcesses : public ::testing::Test {
protected:
    PolicyProcesses() : _store("sqlite"), _client(_store.location()) {
        _client.createList(threads::kNames);
        _client.putInPlace(Policy::byList);
    }

    static const char* rounds() { return zxtest::shortOrLong("150", "3000"); }

    threads::SharedStore _store;
    PolicyClient _client;
};

// One answer comes from one policy, also of a match that began before an edit and ended after it.
TEST_F(PolicyProcesses, AreSeenWholeByEachMatch) {
    const Addresses receivers = threads::numbered("receiver", kReceivers);
    Worker worker("policy_worker", {_store.location(), rounds()});
    uint64_t seen[2] = {0, 0};
    for (uint32_t mode = 0; worker.isRunning() && !HasFailure(); mode = 1 - mode) {
        const Addresses answer = _client.match(mode, threads::kSwapped, receivers);
        const bool isByList = answer == answerUnder(Policy::byList, kReceivers);
        EXPECT_TRUE(isByList || answer == answerUnder(Policy::byName, kReceivers)) << ::testing::PrintToString(answer);
        ++seen[isByList ? 0 : 1];
    }
    worker.finish();
    EXPECT_GT(seen[0], 0u);
    EXPECT_GT(seen[1], 0u);
    zxtest::figure("processes", "matches beside edits", seen[0] + seen[1]);
}

TEST_F(PolicyProcesses, HideNoReferenceWhileTheyMoveIt) {
    Worker worker("policy_worker", {_store.location(), rounds()});
    uint64_t questions = 0;
    for (; worker.isRunning() && !HasFailure(); ++questions)
        EXPECT_TRUE(_client.isReferredTo(threads::kNames));
    worker.finish();
    EXPECT_GT(questions, 0u);
    zxtest::figure("processes", "reference checks beside edits", questions);
}

// Each operation by itself sees the policy before or after an edit; what is learnt from several may be of two.
TEST_F(PolicyProcesses, MayComeBetweenTwoOperations) {
    Worker worker("policy_worker", {_store.location(), rounds()});
    uint64_t pairs = 0, mixed = 0;
    for (; worker.isRunning() && !HasFailure(); ++pairs) {
        const Addresses names = _client.childNames();
        for (const std::string& name : names) {
            EXPECT_TRUE(name == "ByList" || name == "ByName") << name;
            const std::string condition = _client.firstCondition(name);
            if (condition.empty())
                ++mixed;
            else
                EXPECT_EQ(name == "ByList" ? "(Names) *" : std::string(threads::kSwapped) + " *", condition);
        }
        if (names.size() != 1) ++mixed;
    }
    worker.finish();
    EXPECT_GT(pairs, 0u);
    zxtest::figure("processes", "walks by several operations", pairs);
    zxtest::figure("processes", "walks that met two policies", mixed);
}

}  // namespace
