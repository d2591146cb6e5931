// Rules that no mail gets to, and a mail for each of the others.
#include <algorithm>
#include <map>

#include "analysis/lint.h"
#include "output/text.h"
#include "stored/rule_tasks.h"
#include "tool_error.h"

namespace tool {

namespace {

// How the mails that match a rule's conditions are decided, by the number of kinds of them.
using Answers = std::map<uint32_t, uint64_t>;

class Reach {
public:
    Reach(const Store& store, const DecisionSpace& space, const MatchOptions& options, bool isBest)
        : _store(store), _space(space), _options(options) {
        _options.isBest = isBest;
        _found.resize(rules().size());
        for (size_t sender = 0; sender < space.senders().size(); ++sender)
            look(sender, space.decide(0, sender, isBest));
    }

    // A mail for each rule that one gets to, which the library has been asked about.
    std::vector<std::optional<SampleMail>> mails(std::vector<Finding>& findings) const {
        Matcher matcher(_store, _options, [tasks = std::make_shared<const RuleTasks>(_store)](const std::string& path) {
            return tasks->namesOf(path);
        });
        std::vector<std::optional<SampleMail>> mails(_found.size());
        for (uint32_t rule = 0; rule < _found.size(); ++rule) {
            if (!_found[rule]) continue;
            mails[rule] = {_space.senders().witness(_found[rule]->first),
                           _space.receivers().witness(_found[rule]->second)};
            confirm(matcher, rules()[rule].path, *mails[rule], findings);
        }
        return mails;
    }

    // By whom the mails are answered that match the conditions of a rule to which none gets, for each such rule.
    std::map<uint32_t, Answers> answers() const {
        std::map<uint32_t, Answers> answers;
        for (uint32_t rule = 0; rule < _found.size(); ++rule)
            if (!_found[rule]) answers[rule] = {};
        const ClassBits all(_space.receivers().size(), true);
        for (size_t sender = 0; sender < _space.senders().size() && !answers.empty(); ++sender) {
            const std::vector<uint32_t> decisions = _space.decide(0, sender, _options.isBest);
            for (auto& [rule, counts] : answers)
                _space.check(0, rule, sender, all).matched.forEach([&, &counts = counts](size_t receiver) {
                    ++counts[decisions[receiver]];
                });
        }
        return answers;
    }

private:
    const std::vector<StoredRule>& rules() const { return _space.policy(0).rules; }

    void look(size_t sender, const std::vector<uint32_t>& decisions) {
        for (size_t receiver = 0; receiver < decisions.size(); ++receiver) {
            const uint32_t rule = decisions[receiver];
            if (rule < _found.size() && !_found[rule]) _found[rule] = {sender, receiver};
        }
    }

    static void confirm(Matcher& matcher, const std::string& rule, const SampleMail& mail,
                        std::vector<Finding>& findings) {
        try {
            const Decision decision = matcher.decide({mail.sender, {mail.receiver}});
            if (decision.matches.size() == 1 && decision.matches.front().path == rule) return;
        } catch (const StoreError& failure) {
            // The other mode may have met it already.
            const bool isKnown = std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
                return finding.id == std::string("failing-match") && finding.rules.front() == rule;
            });
            if (!isKnown)
                findings.push_back({Severity::Error,
                                    "failing-match",
                                    "rule " + oneLine(rule),
                                    std::string("a mail that gets to it cannot be matched: ") + failure.what(),
                                    "mend the rule, or its tasks, in the store",
                                    {rule},
                                    mail});
            return;
        }
        throw PolicyError("the library does not give a mail from " + inQuotes(mail.sender) + " to " +
                          inQuotes(mail.receiver) + " to rule " + oneLine(rule) + ", as it should; please report it");
    }

    const Store& _store;
    const DecisionSpace& _space;
    MatchOptions _options;
    std::vector<std::optional<std::pair<size_t, size_t>>> _found;
};

constexpr size_t kShownAnswers = 3;

bool isBelow(const std::vector<StoredRule>& rules, uint32_t rule, uint32_t ancestor) {
    while (rule > ancestor)
        rule = rules[rule].parent;
    return rule == ancestor;
}

// Who answers, those with the most kinds of mails first.
Finding findingFor(const DecisionSpace& space, uint32_t rule, const Answers& answers, bool isBest) {
    const std::vector<StoredRule>& rules = space.policy(0).rules;
    Finding finding{Severity::Warning,
                    isBest ? "unreachable-best" : "unreachable-first",
                    "rule " + oneLine(rules[rule].path),
                    std::string("no mail gets to it in ") + (isBest ? "best" : "first") + " match: ",
                    "move or narrow what takes its mails, or delete it",
                    {rules[rule].path}};
    if (answers.empty()) {
        finding.text += "none matches its conditions";
        finding.remedy = "correct its conditions, or delete it";
        return finding;
    }
    std::vector<std::pair<uint64_t, uint32_t>> sorted;
    for (const auto& [answer, count] : answers)
        sorted.emplace_back(count, answer);
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    uint64_t all = 0;
    for (const auto& [count, answer] : sorted)
        all += count;
    // A rule may be there to hold others together.
    const bool isHolder = std::all_of(sorted.begin(), sorted.end(), [&](const auto& entry) {
        return entry.second < rules.size() && isBelow(rules, entry.second, rule);
    });
    if (isHolder) {
        finding.severity = Severity::Note;
        finding.remedy = "nothing, if it is there for the rules below it alone";
    }
    finding.text += "of the " + grouped(all) + (all == 1 ? " kind" : " kinds") + " of mails that match its conditions ";
    for (size_t i = 0; i < sorted.size(); ++i) {
        const auto [count, answer] = sorted[i];
        if (answer < rules.size()) finding.rules.push_back(rules[answer].path);
        if (i == kShownAnswers) finding.text += ", and others the rest";
        if (i >= kShownAnswers) continue;
        finding.text += (i == 0 ? "" : ", ") +
                        (answer == kNoRule       ? std::string("no rule")
                         : answer == kMatchFails ? std::string("a failure at the root")
                                                 : "rule " + oneLine(rules[answer].path)) +
                        (count == all ? " takes all" : " takes " + grouped(count));
    }
    return finding;
}

}  // namespace

std::vector<RuleReach> lintReach(const Store& store, const DecisionSpace& space, const MatchOptions& options,
                                 std::vector<Finding>& findings) {
    std::vector<RuleReach> reaches;
    for (const StoredRule& rule : space.policy(0).rules)
        reaches.push_back({rule.path, {}, {}});
    for (const bool isBest : {false, true}) {
        const Reach reach(store, space, options, isBest);
        const std::vector<std::optional<SampleMail>> mails = reach.mails(findings);
        for (size_t rule = 0; rule < mails.size(); ++rule)
            (isBest ? reaches[rule].best : reaches[rule].first) = mails[rule];
        // A rule without conditions has a finding of its own.
        for (const auto& [rule, answers] : reach.answers())
            if (!space.conditions(0, rule).empty()) findings.push_back(findingFor(space, rule, answers, isBest));
    }
    return reaches;
}

}  // namespace tool
