#include "analysis/unreached_rule.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "output/text.h"

namespace tool {

namespace {

constexpr size_t kShownAnswers = 3;

bool isBelow(const std::vector<StoredRule>& rules, uint32_t rule, uint32_t ancestor) {
    while (rule > ancestor)
        rule = rules[rule].parent;
    return rule == ancestor;
}

// The answers, those with the most kinds of mails first.
std::vector<std::pair<uint64_t, uint32_t>> sortedByCount(const Answers& answers) {
    std::vector<std::pair<uint64_t, uint32_t>> sorted;
    for (const auto& [answer, count] : answers)
        sorted.emplace_back(count, answer);
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    return sorted;
}

std::string answerText(const std::vector<StoredRule>& rules, uint32_t answer, uint64_t count, bool isAll) {
    const std::string share = isAll ? "all" : grouped(count);
    if (answer == kMatchFails) return "rule \\ fails on " + share;
    if (answer != kNotAbove) return "rule " + oneLine(rules[answer].path) + " takes " + share;
    if (isAll) return "none matches the conditions above it";
    return share + (count == 1 ? " does" : " do") + " not match the conditions above it";
}

std::string remedyFor(const Answers& answers) {
    const bool hasTakers = answers.begin()->first < kNotAbove;
    if (answers.count(kMatchFails) != 0) return "mend the conditions of rule \\ first";
    if (answers.count(kNotAbove) == 0) return "move or narrow what takes its mails, or delete it";
    return hasTakers ? "move or narrow what takes its mails, widen the conditions above it, or delete it"
                     : "widen the conditions above it, correct its own, or delete it";
}

}  // namespace

Finding unreachedRule(const DecisionSpace& space, uint32_t rule, const Answers& answers, bool isBest,
                      bool isOfWellFormed) {
    const std::vector<StoredRule>& rules = space.policy(0).rules;
    Finding finding{Severity::Warning,
                    isBest ? "unreachable-best" : "unreachable-first",
                    "rule " + oneLine(rules[rule].path),
                    std::string("no mail ") + (isOfWellFormed ? "with well-formed addresses " : "") + "gets to it in " +
                        (isBest ? "best" : "first") + " match: ",
                    "correct its conditions, or delete it",
                    {rules[rule].path},
                    std::nullopt,
                    isOfWellFormed};
    if (answers.empty()) {
        finding.text += "none matches its conditions";
        return finding;
    }
    finding.remedy = remedyFor(answers);
    const std::vector<std::pair<uint64_t, uint32_t>> sorted = sortedByCount(answers);
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
    finding.text += "of the " + counted(all, "kind") + " of " + (isOfWellFormed ? "such " : "") +
                    "mails that match its conditions ";
    for (size_t i = 0; i < sorted.size(); ++i) {
        const auto [count, answer] = sorted[i];
        if (answer < rules.size()) finding.rules.push_back(rules[answer].path);
        if (i == kShownAnswers) finding.text += ", and others the rest";
        if (i < kShownAnswers) finding.text += (i == 0 ? "" : ", ") + answerText(rules, answer, count, count == all);
    }
    return finding;
}

}  // namespace tool
