#include "analysis/unreached_rule.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "analysis/lint_rules.h"
#include "output/text.h"

namespace tool {

namespace {

constexpr size_t kShownAnswers = 3;

// The answers, those with the most kinds of mails first.
std::vector<std::pair<uint64_t, Answer>> sortedByCount(const Answers& answers) {
    std::vector<std::pair<uint64_t, Answer>> sorted;
    for (const auto& [answer, count] : answers.counts)
        sorted.emplace_back(count, answer);
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    return sorted;
}

void addOnce(std::vector<std::string>& rules, const std::string& rule) {
    if (std::find(rules.begin(), rules.end(), rule) == rules.end()) rules.push_back(rule);
}

std::string joinedByOr(const std::vector<std::string>& steps) {
    std::string text;
    for (size_t i = 0; i < steps.size(); ++i)
        text += (i == 0 ? "" : i + 1 == steps.size() ? ", or " : ", ") + steps[i];
    return text;
}

class Description {
public:
    Description(const DecisionSpace& space, const UnreachedRule& unreached)
        : _rules(space.policy(0).rules), _unreached(unreached), _sorted(sortedByCount(unreached.answers)) {}

    Finding finding() const {
        Finding finding{isHolder() ? Severity::Note : Severity::Warning,
                        _unreached.isBest ? "unreachable-best" : "unreachable-first",
                        "rule " + path(_unreached.rule),
                        std::string("no mail ") + (_unreached.isOfWellFormed ? "with well-formed addresses " : "") +
                            "gets to it in " + modeName(_unreached.isBest) + " match: " + answersText(),
                        isHolder() ? "nothing, if it is there for the rules below it alone" : remedy(),
                        {_rules[_unreached.rule].path},
                        std::nullopt,
                        _unreached.isOfWellFormed};
        for (const auto& [count, answer] : _sorted)
            if (answer.kind != Answer::Kind::NotAbove) addOnce(finding.rules, _rules[answer.rule].path);
        return finding;
    }

private:
    static std::string modeName(bool isBest) { return isBest ? "best" : "first"; }
    std::string path(uint32_t rule) const { return oneLine(_rules[rule].path); }

    // A rule may be there to hold others together.
    bool isHolder() const {
        return !_sorted.empty() && std::all_of(_sorted.begin(), _sorted.end(), [&](const auto& entry) {
            return entry.second.kind == Answer::Kind::Taken && isAtOrBelow(_rules, entry.second.rule, _unreached.rule);
        });
    }

    std::string answersText() const {
        if (_sorted.empty()) return "none matches its conditions";
        uint64_t all = 0;
        for (const auto& [count, answer] : _sorted)
            all += count;
        std::string text = "of the " + counted(all, "kind") + " of " + (_unreached.isOfWellFormed ? "such " : "") +
                           "mails that match its conditions" +
                           (_unreached.answers.hasFailures ? ", or on which these fail, " : " ");
        for (size_t i = 0; i < std::min(_sorted.size(), kShownAnswers); ++i)
            text += (i == 0 ? "" : ", ") + answerText(_sorted[i].second, _sorted[i].first, _sorted.size() == 1);
        return _sorted.size() > kShownAnswers ? text + ", and others the rest" : text;
    }

    std::string answerText(const Answer& answer, uint64_t count, bool isAll) const {
        const std::string share = isAll ? "all" : grouped(count);
        switch (answer.kind) {
            case Answer::Kind::Taken:
                return "rule " + path(answer.rule) + " takes " + share;
            case Answer::Kind::Failed:
                return "rule " + path(answer.rule) + " cannot be checked for " + (isAll ? "any" : share);
            case Answer::Kind::NotAbove:
                break;
        }
        if (isAll) return "none matches the conditions above it";
        return share + (count == 1 ? " does" : " do") + " not match the conditions above it";
    }

    bool hasAnswer(Answer::Kind kind) const {
        return std::any_of(_sorted.begin(), _sorted.end(),
                           [&](const auto& entry) { return entry.second.kind == kind; });
    }

    std::string remedy() const {
        for (const auto& [count, answer] : _sorted)
            if (answer.kind == Answer::Kind::Failed)
                return "first mend the lists that the conditions of rule " + path(answer.rule) + " name";
        std::vector<std::string> steps;
        const bool isTaken = hasAnswer(Answer::Kind::Taken), isNotAbove = hasAnswer(Answer::Kind::NotAbove);
        if (isTaken) steps.emplace_back("move or narrow what takes its mails");
        if (isNotAbove) steps.emplace_back("widen the conditions above it");
        if (!isTaken) steps.emplace_back(isNotAbove ? "correct its own" : "correct its conditions");
        if (_unreached.isReachedOtherwise)
            return joinedByOr(steps) + ", unless only " + modeName(!_unreached.isBest) + " match is used";
        if (_unreached.isOthersReachedBelow && _unreached.rule != 0)
            steps.emplace_back("keep it for the rules below it");
        else if (_unreached.rule != 0)
            steps.emplace_back("delete it");
        return joinedByOr(steps);
    }

    const std::vector<StoredRule>& _rules;
    const UnreachedRule& _unreached;
    const std::vector<std::pair<uint64_t, Answer>> _sorted;
};

}  // namespace

Finding unreachedRule(const DecisionSpace& space, const UnreachedRule& unreached) {
    return Description(space, unreached).finding();
}

}  // namespace tool
