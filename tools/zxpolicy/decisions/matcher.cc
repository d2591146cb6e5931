#include "decisions/matcher.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "decisions/condition_watch.h"
#include "decisions/match_failure.h"
#include "output/text.h"
#include "stored/snapshot.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr int kTries = 3;

}  // namespace

// Owns what a match call returned.
class Matcher::Answer {
public:
    // `watch` may be null.
    Answer(const Matcher& matcher, const std::string& sender, std::vector<const char*>& receivers,
           ConditionWatch* watch) {
        const auto begin = std::chrono::steady_clock::now();
        if (watch == nullptr)
            zxpol_matchRuleByMailInfoEx(matcher._rules.get(), matcher._lists.get(), matcher._mode, sender.c_str(),
                                        receivers.data(), &_pairs, &_count, &_result);
        else
            zxpol_explainMatch(matcher._rules.get(), matcher._lists.get(), matcher._mode, sender.c_str(),
                               receivers.data(), &ConditionWatch::observe, watch->context(), &_pairs, &_count,
                               &_result);
        _duration = std::chrono::steady_clock::now() - begin;
    }
    ~Answer() {
        int result = ZXPOL_S_OK;
        if (_pairs != nullptr) zxpol_freeMatchPair(_pairs, _count, &result);
    }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    int result() const { return _result; }
    std::chrono::nanoseconds duration() const { return _duration; }
    uint32_t count() const { return _count; }
    const _ZxPolMatchPair& pair(size_t index) const { return _pairs[index]; }

private:
    _ZxPolMatchPair* _pairs = nullptr;
    uint32_t _count = 0;
    int _result = ZXPOL_S_OK;
    std::chrono::nanoseconds _duration{0};
};

void setMatchOptions(const MatchOptions& options) {
    int result = ZXPOL_S_OK;
    const _ZxPolMatchOption option{1, options.priority, options.weight, 0, 0};
    zxpol_setMatchOption(&option, &result);
    require(result, "cannot set the options of best matching");
}

std::map<std::string_view, const MatchedRule*> Decision::byReceiver() const {
    std::map<std::string_view, const MatchedRule*> rules;
    for (const MatchedRule& rule : matches)
        for (const std::string& receiver : rule.receivers)
            rules.emplace(receiver, &rule);
    return rules;
}

Matcher::Matcher(const Store& store, const MatchOptions& options, TaskLookup lookup, Conditions conditions)
    : _store(store), _lookup(std::move(lookup)), _conditions(conditions) {
    setOptions(options);
    int result = ZXPOL_S_OK;
    _lists = ListHiveHandle(zxpol_openAddrListHive(store.key(), &result));
    _rules = RuleHiveHandle(zxpol_openRuleHive(store.key(), 0, &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
}

void Matcher::setOptions(const MatchOptions& options) {
    _mode = options.isBest ? 1 : 0;
    setMatchOptions(options);
}

// Which tasks a rule asks for does not depend on the mail, so once for each rule will do. The library's answer must say
// the same number.
const std::vector<std::string>& Matcher::tasksOf(const std::string& rulePath, uint32_t count) {
    auto found = _tasks.find(rulePath);
    if (found == _tasks.end()) found = _tasks.emplace(rulePath, _lookup(rulePath)).first;
    if (found->second.size() != count)
        throw PolicyError("rule " + oneLine(rulePath) + " asks for " + std::to_string(count) + " tasks, of which " +
                          std::to_string(found->second.size()) + " have names; please report it");
    return found->second;
}

Decision Matcher::decideOnce(const Envelope& envelope, std::vector<const char*>& receivers) {
    std::optional<ConditionWatch> watch;
    if (_conditions == Conditions::Watched) watch.emplace(envelope.receivers.size());
    const Answer answer(*this, envelope.sender, receivers, watch ? &*watch : nullptr);
    if (watch) watch->rethrow();
    if (isFailureOfPolicy(answer.result())) return {{}, {}, answer.duration(), answer.result()};
    if (ZX_FAILURE(answer.result())) throw StoreError(cannotMatch(envelope), answer.result());
    Decision decision{{}, {}, answer.duration()};
    std::unordered_map<const char*, size_t> left;
    for (size_t i = 0; i + 1 < receivers.size(); ++i)
        left.emplace(receivers[i], i);
    for (uint32_t i = 0; i < answer.count(); ++i) {
        const _ZxPolMatchPair& pair = answer.pair(i);
        MatchedRule rule{pair.rulePath, {}, tasksOf(pair.rulePath, pair.taskCount), {}};
        for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver) {
            rule.receivers.emplace_back(*receiver);
            const auto found = left.find(*receiver);
            if (watch) rule.conditions.push_back(watch->conditionOf(found->second));
            left.erase(found);
        }
        decision.matches.push_back(std::move(rule));
    }
    for (size_t i = 0; i + 1 < receivers.size(); ++i)
        if (left.count(receivers[i]) != 0) decision.unmatched.emplace_back(receivers[i]);
    return decision;
}

// Decides while nothing changes in the store: the mail is decided again when something did.
Decision Matcher::decideUnchanged(const Envelope& envelope, std::vector<const char*>& receivers) {
    for (int i = 0; i < kTries; ++i) {
        const uint64_t before = _store.stamp();
        if (before != _tasksStamp) _tasks.clear();
        _tasksStamp = before;
        try {
            Decision decision = decideOnce(envelope, receivers);
            if (_store.stamp() == before) return decision;
        } catch (const ToolError&) {
            if (_store.stamp() == before) throw;
        }
    }
    StoreUpdate update(_store);
    const uint64_t before = _store.stamp();
    _tasks.clear();
    Decision decision = decideOnce(envelope, receivers);
    requireUnchanged(_store, before);
    update.cancel();
    _tasksStamp = 0;
    return decision;
}

Decision Matcher::decide(const Envelope& envelope) {
    Decision decision = decideOrFail(envelope);
    if (decision.failure != 0) throw StoreError(cannotMatch(envelope), decision.failure);
    return decision;
}

Decision Matcher::decideOrFail(const Envelope& envelope) {
    std::vector<const char*> receivers;
    receivers.reserve(envelope.receivers.size() + 1);
    for (const std::string& receiver : envelope.receivers)
        receivers.push_back(receiver.c_str());
    receivers.push_back(nullptr);
    return decideUnchanged(envelope, receivers);
}

}  // namespace tool
