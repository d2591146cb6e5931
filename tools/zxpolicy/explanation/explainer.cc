#include "explanation/explainer.h"

#include <set>

#include "explanation/step_recorder.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

// The answer as the library gives it; the names of the tasks are those that were told.
class ExplainedMatch {
public:
    ExplainedMatch(const Store& store, const MatchOptions& options) {
        setMatchOptions(options);
        int result = ZXPOL_S_OK;
        _lists = ListHiveHandle(zxpol_openAddrListHive(store.key(), &result));
        _rules = RuleHiveHandle(zxpol_openRuleHive(store.key(), 0, &result));
        require(result, "cannot open the policy in " + oneLine(store.location()));
    }
    ~ExplainedMatch() { zxpol_freeMatchPair(_pairs, _count, nullptr); }
    ExplainedMatch(const ExplainedMatch&) = delete;
    ExplainedMatch& operator=(const ExplainedMatch&) = delete;

    // `explanation` has the mail and the options, and receives the rest.
    void run(Explanation& explanation) {
        std::vector<const char*> receivers;
        for (const std::string& receiver : explanation.envelope.receivers)
            receivers.push_back(receiver.c_str());
        receivers.push_back(nullptr);
        StepRecorder recorder(explanation);
        zxpol_explainMatch(_rules.get(), _lists.get(), explanation.options.isBest ? 1 : 0,
                           explanation.envelope.sender.c_str(), receivers.data(), &StepRecorder::observe,
                           recorder.context(), &_pairs, &_count, &explanation.result);
        recorder.rethrow();
        if (ZX_SUCCESS(explanation.result)) takeAnswer(explanation, receivers);
    }

private:
    void takeAnswer(Explanation& explanation, const std::vector<const char*>& receivers) const {
        std::set<const char*> matched;
        for (uint32_t index = 0; index < _count; ++index) {
            const _ZxPolMatchPair& pair = _pairs[index];
            MatchedRule rule{pair.rulePath, {}, explanation.collections.at(index).taken(), {}};
            if (rule.path != explanation.collections[index].rule || rule.tasks.size() != pair.taskCount)
                throw PolicyError("the steps of the match do not lead to its answer; please report it");
            for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver) {
                rule.receivers.emplace_back(*receiver);
                matched.insert(*receiver);
            }
            explanation.decision.matches.push_back(std::move(rule));
        }
        for (const char* receiver : receivers)
            if (receiver != nullptr && matched.count(receiver) == 0)
                explanation.decision.unmatched.emplace_back(receiver);
    }

    ListHiveHandle _lists;
    RuleHiveHandle _rules;
    _ZxPolMatchPair* _pairs = nullptr;
    uint32_t _count = 0;
};

}  // namespace

Explanation explain(const Store& store, const MatchOptions& options, const Envelope& envelope) {
    Explanation explanation;
    explanation.envelope = envelope;
    explanation.options = options;
    ExplainedMatch(store, options).run(explanation);
    return explanation;
}

}  // namespace tool
