// Rules that no mail gets to, and a mail for each of the others.
#include <algorithm>
#include <map>

#include "analysis/lint_rules.h"
#include "analysis/unreached_rule.h"
#include "decisions/task_lookup.h"
#include "output/progress.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

class Reach {
public:
    Reach(const Store& store, const DecisionSpace& space, const MatchOptions& options, bool isBest)
        : _store(store), _space(space), _options(options) {
        _options.isBest = isBest;
        _found.resize(rules().size());
        _ranks.resize(rules().size(), kMalformed);
        Progress progress("kinds of senders", space.senders().size());
        for (size_t sender = 0; sender < space.senders().size(); ++sender) {
            look(sender, space.decide(0, sender, isBest));
            progress.step(sender);
        }
    }

    // A mail for each rule that one gets to, which the library has been asked about.
    std::vector<std::optional<SampleMail>> mails(std::vector<Finding>& findings) const {
        Matcher matcher(_store, _options, lookupTasks(_store));
        std::vector<std::optional<SampleMail>> mails(_found.size());
        for (uint32_t rule = 0; rule < _found.size(); ++rule) {
            if (!_found[rule]) continue;
            mails[rule] = {_space.senders().witness(_found[rule]->first),
                           _space.receivers().witness(_found[rule]->second)};
            confirm(matcher, rules()[rule].path, *mails[rule], findings);
        }
        return mails;
    }

    bool isBest() const { return _options.isBest; }
    // Whether a mail gets to a rule, or one that may have well-formed addresses.
    bool isReached(uint32_t rule, bool isOfWellFormed) const {
        return _found[rule] && !(isOfWellFormed && _ranks[rule] == kMalformed);
    }
    // Whether a mail gets to a rule, though none with well-formed addresses.
    bool isMalformedOnly(uint32_t rule) const { return _found[rule] && _ranks[rule] == kMalformed; }

    // What becomes of the mails that match the conditions of a rule to which none gets, for each such rule. Where mails
    // with addresses that are not well-formed do, the others count.
    std::map<uint32_t, Answers> answers() const {
        std::map<uint32_t, Answers> answers;
        for (uint32_t rule = 0; rule < _found.size(); ++rule)
            if (!_found[rule] || isMalformedOnly(rule)) answers[rule] = {};
        const AnswerCounter counter(_space, _options.isBest);
        const ClassBits all(_space.receivers().size(), true);
        Progress progress("kinds of senders", _space.senders().size());
        for (size_t sender = 0; sender < _space.senders().size() && !answers.empty(); ++sender) {
            progress.step(sender);
            const std::vector<uint32_t> decisions = _space.decide(0, sender, _options.isBest);
            for (auto& [rule, counts] : answers)
                if (!isMalformedOnly(rule))
                    counter.add(rule, sender, decisions, all, counts);
                else if (_space.senders().wellFormed().has(sender))
                    counter.add(rule, sender, decisions, _space.receivers().wellFormed(), counts);
        }
        return answers;
    }

private:
    // What is known of the addresses of a class.
    enum Rank : uint8_t { kMalformed, kUnknown, kWellFormed };

    const std::vector<StoredRule>& rules() const { return _space.policy(0).rules; }

    static Rank rankOf(const SideClasses& side, size_t one) {
        if (!side.wellFormed().has(one)) return kMalformed;
        return side.isWellFormed(one) ? kWellFormed : kUnknown;
    }

    // Well-formed addresses come before others.
    void look(size_t sender, const std::vector<uint32_t>& decisions) {
        const Rank senderRank = rankOf(_space.senders(), sender);
        for (size_t receiver = 0; receiver < decisions.size(); ++receiver) {
            const uint32_t rule = decisions[receiver];
            if (rule >= _found.size() || (_found[rule] && _ranks[rule] >= senderRank)) continue;
            const Rank rank = std::min(senderRank, rankOf(_space.receivers(), receiver));
            if (_found[rule] && _ranks[rule] >= rank) continue;
            _found[rule] = {sender, receiver};
            _ranks[rule] = rank;
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
    std::vector<Rank> _ranks;  // of what is found
};

void addUnreached(const DecisionSpace& space, const Reach& reach, const Reach& other, std::vector<Finding>& findings) {
    for (auto& [rule, answers] : reach.answers()) {
        // A rule without conditions has a finding of its own.
        if (space.conditions(0, rule).empty()) continue;
        const bool isOfWellFormed = reach.isMalformedOnly(rule);
        const bool isReachedBelow = anyBelow(space.policy(0).rules, rule, [&](uint32_t below) {
            return reach.isReached(below, isOfWellFormed) || other.isReached(below, isOfWellFormed);
        });
        findings.push_back(unreachedRule(space, {rule, answers, reach.isBest(), other.isReached(rule, isOfWellFormed),
                                                 isReachedBelow, isOfWellFormed}));
    }
}

}  // namespace

std::vector<RuleReach> lintReach(const Store& store, const DecisionSpace& space, const MatchOptions& options,
                                 std::vector<Finding>& findings) {
    const Reach first(store, space, options, false), best(store, space, options, true);
    const auto firstMails = first.mails(findings);
    addUnreached(space, first, best, findings);
    const auto bestMails = best.mails(findings);
    addUnreached(space, best, first, findings);
    std::vector<RuleReach> reaches;
    for (size_t rule = 0; rule < firstMails.size(); ++rule)
        reaches.push_back({space.policy(0).rules[rule].path, firstMails[rule], bestMails[rule]});
    return reaches;
}

}  // namespace tool
