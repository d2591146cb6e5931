// Conditions beside each other and their parents'.
#include <algorithm>

#include "analysis/lint.h"
#include "analysis/lint_text.h"

namespace tool {

namespace {

// The addresses that count.
struct Scope {
    ClassBits senders;
    ClassBits receivers;
};

class ConditionCoverage {
public:
    ConditionCoverage(const DecisionSpace& space, std::vector<Finding>& findings)
        : _space(space),
          _all{ClassBits(space.senders().size(), true), ClassBits(space.receivers().size(), true)},
          _wellFormed{space.senders().wellFormed(), space.receivers().wellFormed()},
          _findings(findings) {}

    void run() {
        const std::vector<StoredRule>& rules = _space.policy(0).rules;
        for (uint32_t rule = 0; rule < rules.size(); ++rule) {
            const std::vector<ClassCondition>& conditions = _space.conditions(0, rule);
            for (size_t i = 0; i < conditions.size(); ++i) {
                if (!canBeCompared(conditions[i])) continue;
                if (isNever(conditions[i], _all)) continue;
                if (!isTakenTwice(rules[rule], i)) lookAtSiblings(rules[rule], conditions, i);
                if (rule != 0) lookAtParent(rules[rule], conditions[i], i);
            }
        }
    }

private:
    // Whether the condition behind it cannot be read, and counts as this one once more. Without this one it would count
    // as another.
    static bool isTakenTwice(const StoredRule& rule, size_t index) {
        return index + 1 < rule.conditions.size() && !rule.conditions[index + 1].isReadable;
    }

    static bool canBeCompared(const ClassCondition& condition) {
        return condition.sender != ClassCondition::kFails && condition.receiver != ClassCondition::kFails;
    }

    // An empty list, which has a finding of its own, matches no address.
    bool isNever(const ClassCondition& condition, const Scope& scope) const {
        return sendersOf(condition, scope).isEmpty() || receiversOf(condition, scope).isEmpty();
    }

    ClassBits sendersOf(const ClassCondition& condition, const Scope& scope) const {
        ClassBits senders = scope.senders;
        return senders &= _space.senders().matching(condition.sender);
    }
    ClassBits receiversOf(const ClassCondition& condition, const Scope& scope) const {
        ClassBits receivers = scope.receivers;
        return receivers &= _space.receivers().matching(condition.receiver);
    }

    // Well-formed addresses count, unless the condition matches others alone.
    const Scope& scopeOf(const ClassCondition& condition) const {
        return isNever(condition, _wellFormed) ? _all : _wellFormed;
    }

    bool covers(const ClassCondition& wide, const ClassCondition& narrow, const Scope& scope) const {
        return sendersOf(narrow, scope).isIn(_space.senders().matching(wide.sender)) &&
               receiversOf(narrow, scope).isIn(_space.receivers().matching(wide.receiver));
    }

    // Whether a match of the narrow condition is never of a larger weight than one of the wide condition.
    bool outweighs(const ClassCondition& wide, const ClassCondition& narrow, const Scope& scope) const {
        const auto isNeverLarger = [](const SideClasses& side, const ClassBits& matching, uint32_t narrowTest,
                                      uint32_t wideTest) {
            bool isFine = true;
            matching.forEach(
                [&](size_t one) { isFine = isFine && side.weight(one, narrowTest) <= side.weight(one, wideTest); });
            return isFine;
        };
        return isNeverLarger(_space.senders(), sendersOf(narrow, scope), narrow.sender, wide.sender) &&
               isNeverLarger(_space.receivers(), receiversOf(narrow, scope), narrow.receiver, wide.receiver);
    }

    // Whether a condition may fail on a mail that another one matches. The receiver is looked at first.
    bool mayFail(const ClassCondition& condition, const ClassCondition& matching, const Scope& scope) const {
        if (canBeCompared(condition)) return false;
        if (condition.receiver == ClassCondition::kFails) return true;
        ClassBits receivers = receiversOf(matching, scope);
        receivers &= _space.receivers().matching(condition.receiver);
        return !receivers.isEmpty();
    }

    // Whether the rule would match the same mails without the one condition, for the other's sake. Of conditions that
    // cover each other the first one stays.
    bool isCovered(const std::vector<ClassCondition>& conditions, size_t index, size_t other,
                   const Scope& scope) const {
        const ClassCondition& narrow = conditions[index];
        if (other == index || !canBeCompared(conditions[other]) || !covers(conditions[other], narrow, scope))
            return false;
        if (other < index) return true;
        // First match goes no further than to the first condition that matches, or fails.
        const auto first = conditions.begin();
        return !covers(narrow, conditions[other], scope) &&
               std::none_of(first + static_cast<std::ptrdiff_t>(index), first + static_cast<std::ptrdiff_t>(other),
                            [&](const ClassCondition& between) { return mayFail(between, narrow, scope); });
    }

    void lookAtSiblings(const StoredRule& rule, const std::vector<ClassCondition>& conditions, size_t index) {
        std::optional<size_t> cover;
        bool isIdle = false;
        const ClassCondition& narrow = conditions[index];
        const Scope& scope = scopeOf(narrow);
        for (size_t other = 0; other < conditions.size() && !isIdle; ++other) {
            if (!isCovered(conditions, index, other, scope)) continue;
            isIdle = outweighs(conditions[other], narrow, scope);
            if (!cover || isIdle) cover = other;
        }
        if (!cover) return;
        const bool isOfAll =
            isCovered(conditions, index, *cover, _all) && (!isIdle || outweighs(conditions[*cover], narrow, _all));
        _findings.push_back({isIdle ? Severity::Warning : Severity::Note,
                             "covered-condition",
                             conditionText(rule.path, index),
                             "condition " + std::to_string(*cover + 1) + " of the rule matches every mail " +
                                 (isOfAll ? "" : "with well-formed addresses ") + "that it matches" +
                                 (isIdle ? "" : "; in best match it may make the rule weigh more"),
                             isIdle ? "remove it" : "remove it, unless best match is used and the weight is meant",
                             {rule.path},
                             std::nullopt,
                             !isOfAll});
    }

    void lookAtParent(const StoredRule& rule, const ClassCondition& condition, size_t index) {
        const StoredRule& parent = _space.policy(0).rules[rule.parent];
        std::optional<SampleMail> outside;
        const Scope& scope = scopeOf(condition);
        sendersOf(condition, scope).forEach([&](size_t sender) {
            if (outside) return;
            ClassBits left = receiversOf(condition, scope);
            for (const ClassCondition& above : _space.conditions(0, rule.parent))
                if (canBeCompared(above) && _space.senders().matches(sender, above.sender))
                    left -= _space.receivers().matching(above.receiver);
            left.forEach([&](size_t receiver) {
                if (!outside) outside = {_space.senders().witness(sender), _space.receivers().witness(receiver)};
            });
        });
        if (!outside) return;
        _findings.push_back({Severity::Warning,
                             "outside-parent",
                             conditionText(rule.path, index),
                             "it matches mails that no condition of rule " + oneLine(parent.path) +
                                 " matches: first match may give them to this rule, best match never does",
                             "narrow it, or widen the conditions above",
                             {rule.path, parent.path},
                             outside});
    }

    const DecisionSpace& _space;
    const Scope _all;
    const Scope _wellFormed;
    std::vector<Finding>& _findings;
};

}  // namespace

void lintCoverage(const DecisionSpace& space, std::vector<Finding>& findings) {
    ConditionCoverage(space, findings).run();
}

}  // namespace tool
