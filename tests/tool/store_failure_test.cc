// Questions to a store of which one call fails: they are answered in full, or not at all.
#include <gmock/gmock.h>

#include <functional>
#include <sstream>

#include "addrlist/normal_addr_list.h"
#include "analysis/diff_command.h"
#include "change/apply.h"
#include "decisions/fixed_policy.h"
#include "policy/policy_reader.h"
#include "policy/policy_writer.h"
#include "show/classification_show.h"
#include "show/rule_show.h"
#include "stored/dump_command.h"
#include "stored/policy_store_reader.h"
#include "stored/refs_command.h"
#include "support/fault_store.h"
#include "tool_fixture.h"

namespace tool {

namespace {

constexpr const char* kFailingStore = "memory:failing";

struct Question {
    const char* name;
    ExitStatus status;  // when nothing fails
    std::function<ExitStatus(std::ostream&)> ask;
};

void PrintTo(const Question& question, std::ostream* out) {
    *out << question.name;
}

std::function<ExitStatus(std::ostream&)> refsTo(ZxPolRefEntity entity, const char* name) {
    return [=](std::ostream& out) { return runRefs({kFailingStore, entity, name, OutputFormat::Text}, out); };
}

ExitStatus askForDump(std::ostream& out) {
    runDump({kFailingStore, true}, out);
    return kSuccess;
}

ExitStatus askForACopy(std::ostream& out) {
    const FixedPolicy copy(kFailingStore);
    const StoredPolicy stored = readPolicySnapshot(copy.store(), Secrets::Leave);
    requireNoProblems(stored.problems, "cannot read the copy");
    out << writePolicy(stored.policy);
    return kSuccess;
}

std::function<ExitStatus(std::ostream&)> show(void (*run)(const RuleShowOptions&, std::ostream&), const char* path) {
    return [=](std::ostream& out) { return run({kFailingStore, path, OutputFormat::Text}, out), kSuccess; };
}

ExitStatus askForActions(std::ostream& out) {
    runClassificationShow({kFailingStore, "Bad", OutputFormat::Json}, out);
    return kSuccess;
}

ExitStatus askForDifferences(std::ostream& out) {
    return runDiff({kFailingStore, kFailingStore, {}, 5, OutputFormat::Text}, out);
}

const std::string kQuestioned =
    "zxpolicy: 1\nlists:\n"
    "  - {name: Staff, displayName: S, comment: s, addresses: [a@b, c@d]}\n"
    "  - {name: Far, type: directory, displayName: F, comment: f, server: s, password: p}\n"
    "classifications: [{name: Bad, displayName: B, comment: b,\n"
    "                   actions: [{name: d, displayName: D, comment: x, actionType: 2, setting: {k: 1}}, {name: e}]}]\n"
    "exclusiveFilters: [{filter: 7, priority: asc}]\n" +
    policyWithRoot(
        R"(  tasks: [{name: t, filter: 7, enable: true, overridable: true, displayName: T, outcomes: {o: Bad}}]
  rules:
    - name: A
      displayName: a
      conditions: [{sender: a@b, receiver: "*"}, {sender: (Staff), receiver: "*"}]
      inactive: ['\t']
      rules: [{name: B, conditions: [{sender: (Staff), receiver: "*"}], tasks: [{name: u, outcomes: {p: Bad}}]}]
    - {name: C, matchType: 3}
)")
        .substr(12);

class FailingStore : public testing::TestWithParam<Question> {
protected:
    FailingStore() : _store(kFailingStore, Store::Missing::Create) {
        applyPolicy(_store, "p", readPolicy("p", kQuestioned), false);
    }
    ~FailingStore() override { zxtest::failNoStoreCall(); }

    // The status; what is printed goes to `out`.
    static ExitStatus ask(std::string& out) {
        int ignored = ZXPOL_S_OK;
        ZxPolNormalAddrList::clearAddrCacheByName("Staff", &ignored);
        std::ostringstream text;
        ExitStatus status = kFailed;
        try {
            const zxtest::CountedCalls counted;
            status = GetParam().ask(text);
        } catch (const ToolError& error) {
            status = error.status();
        }
        out = text.str();
        return status;
    }

private:
    Store _store;
};

}  // namespace

TEST_P(FailingStore, IsNoAnswerOrTheSameAnswer) {
    std::string whole;
    ASSERT_EQ(ask(whole), GetParam().status);
    ASSERT_NE(whole, "");
    uint64_t refused = 0;
    uint64_t call = 1;
    for (;; ++call) {
        zxtest::failStoreCall(call, ZXREG_E_IO);
        std::string out;
        const ExitStatus status = ask(out);
        if (!zxtest::storeCallFailed()) break;
        const bool isRefused = status == kFailed;
        if (isRefused) ++refused;
        EXPECT_EQ(status, isRefused ? kFailed : GetParam().status) << call << ": " << zxtest::failedStoreCall();
        EXPECT_EQ(out, isRefused ? "" : whole) << call << ": " << zxtest::failedStoreCall();
    }
    EXPECT_GT(call, 100U);
    EXPECT_GT(refused, call / 5);
}

INSTANTIATE_TEST_SUITE_P(
    All, FailingStore,
    testing::Values(Question{"RefsToAList", kSuccess, refsTo(ZXPOL_REF_ADDRLIST, "Staff")},
                    Question{"RefsToNoList", kAnswerIsNo, refsTo(ZXPOL_REF_ADDRLIST, "Far")},
                    Question{"RefsToAClassification", kSuccess, refsTo(ZXPOL_REF_CLASSIFICATION, "Bad")},
                    Question{"RefsToNoClassification", kAnswerIsNo, refsTo(ZXPOL_REF_CLASSIFICATION, "Worse")},
                    Question{"Dump", kSuccess, askForDump}, Question{"Copy", kSuccess, askForACopy},
                    Question{"Tree", kSuccess, show(runTree, "\\")},
                    Question{"RuleShow", kSuccess, show(runRuleShow, "\\A")},
                    Question{"TaskShow", kSuccess, show(runTaskShow, "\\A\\B\\u")},
                    Question{"ClassificationShow", kSuccess, askForActions},
                    Question{"Diff", kSuccess, askForDifferences}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace tool
