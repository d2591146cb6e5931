#include "analysis/decision_diff.h"

#include <algorithm>
#include <map>
#include <optional>

#include "analysis/decision_space.h"
#include "decisions/task_lookup.h"
#include "output/progress.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

// The outcomes of one policy by its decisions.
class Outcomes {
public:
    Outcomes(const Store& store, const StoredRules& rules) : _rules(rules), _tasksOf(lookupTasks(store)) {}

    const DecisionOutcome& of(uint32_t decision) {
        const auto found = _known.find(decision);
        return found != _known.end() ? found->second : _known.emplace(decision, make(decision)).first->second;
    }

private:
    DecisionOutcome make(uint32_t decision) const {
        if (decision == kNoRule) return {};
        if (decision == kMatchFails) return {"\\", {}, "the conditions of rule \\ cannot be compared"};
        DecisionOutcome outcome{_rules.rules[decision].path, {}, {}};
        try {
            outcome.tasks = _tasksOf(outcome.rule);
        } catch (const StoreError& failure) {
            outcome.failure = failure.what();
        }
        return outcome;
    }

    const StoredRules& _rules;
    TaskLookup _tasksOf;
    std::map<uint32_t, DecisionOutcome> _known;
};

// A list of both policies is told once.
std::vector<std::string> matchedTexts(const SideClasses& side, size_t one) {
    std::vector<std::string> texts;
    for (const MatchedTest& matched : side.matched(one)) {
        const std::string& text = side.textOf(matched.test);
        if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
    }
    return texts;
}

class Comparison {
public:
    Comparison(const Store& before, const Store& after, const MatchOptions& options, size_t samples)
        : _before(before),
          _after(after),
          _options(options),
          _samples(samples),
          _beforeRules(readStoredRules(before)),
          _afterRules(readStoredRules(after)),
          _space({&_beforeRules, &_afterRules}, options),
          _beforeOutcomes(before, _beforeRules),
          _afterOutcomes(after, _afterRules) {}

    DecisionDiff run() {
        DecisionDiff diff;
        diff.kinds = uint64_t{_space.senders().size()} * _space.receivers().size();
        Progress progress("kinds of senders", _space.senders().size());
        for (size_t sender = 0; sender < _space.senders().size(); ++sender) {
            compare(sender);
            progress.step(sender);
        }
        progress.clear();
        for (auto& [decisions, change] : _changes) {
            diff.changed += change.count;
            diff.changes.push_back(std::move(change));
        }
        std::stable_sort(diff.changes.begin(), diff.changes.end(),
                         [](const DecisionChange& a, const DecisionChange& b) { return a.count > b.count; });
        confirm(diff);
        return diff;
    }

private:
    void compare(size_t sender) {
        const std::vector<uint32_t> before = _space.decide(0, sender, _options.isBest);
        const std::vector<uint32_t> after = _space.decide(1, sender, _options.isBest);
        for (size_t receiver = 0; receiver < before.size(); ++receiver) {
            if (!differ(before[receiver], after[receiver])) continue;
            DecisionChange& change = _changes[{before[receiver], after[receiver]}];
            if (change.count++ == 0) {
                change.before = _beforeOutcomes.of(before[receiver]);
                change.after = _afterOutcomes.of(after[receiver]);
            }
            if (change.kinds.size() < _samples) change.kinds.push_back(kindOf(sender, receiver));
        }
    }

    bool differ(uint32_t before, uint32_t after) {
        const auto [place, isNew] = _differ.emplace(std::make_pair(before, after), false);
        if (isNew) place->second = _beforeOutcomes.of(before) != _afterOutcomes.of(after);
        return place->second;
    }

    MailKind kindOf(size_t sender, size_t receiver) const {
        return {{_space.senders().witness(sender), _space.receivers().witness(receiver)},
                matchedTexts(_space.senders(), sender),
                matchedTexts(_space.receivers(), receiver)};
    }

    // The library is asked about each mail that is told.
    void confirm(const DecisionDiff& diff) const {
        for (const bool isBefore : {true, false}) {
            const Store& store = isBefore ? _before : _after;
            Matcher matcher(store, _options, lookupTasks(store));
            for (const DecisionChange& change : diff.changes)
                for (const MailKind& kind : change.kinds)
                    confirm(matcher, isBefore ? change.before : change.after, kind.mail);
        }
    }

    static void confirm(Matcher& matcher, const DecisionOutcome& expected, const SampleMail& mail) {
        bool isAsExpected = false;
        try {
            const Decision decision = matcher.decide({mail.sender, {mail.receiver}});
            isAsExpected = expected.failure.empty() &&
                           (decision.matches.empty() ? expected.rule.empty()
                                                     : decision.matches.front().path == expected.rule &&
                                                           decision.matches.front().tasks == expected.tasks);
        } catch (const StoreError&) {
            isAsExpected = !expected.failure.empty();
        }
        if (!isAsExpected)
            throw PolicyError("the library decides otherwise than expected on a mail from " + inQuotes(mail.sender) +
                              " to " + inQuotes(mail.receiver) + "; please report it");
    }

    const Store& _before;
    const Store& _after;
    MatchOptions _options;
    size_t _samples;
    StoredRules _beforeRules;
    StoredRules _afterRules;
    DecisionSpace _space;
    Outcomes _beforeOutcomes;
    Outcomes _afterOutcomes;
    std::map<std::pair<uint32_t, uint32_t>, bool> _differ;
    std::map<std::pair<uint32_t, uint32_t>, DecisionChange> _changes;
};

}  // namespace

DecisionDiff compareDecisions(const Store& before, const Store& after, const MatchOptions& options, size_t samples) {
    return Comparison(before, after, options, samples).run();
}

}  // namespace tool
