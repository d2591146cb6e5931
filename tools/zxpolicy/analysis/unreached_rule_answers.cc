#include "analysis/unreached_rule_answers.h"

#include "analysis/lint_rules.h"

namespace tool {

void AnswerCounter::add(uint32_t rule, size_t sender, const std::vector<uint32_t>& decisions,
                        const ClassBits& receivers, Answers& answers) const {
    const DecisionSpace::Checked own = _space.check(0, rule, sender, receivers, _isBest);
    answers.hasFailures = answers.hasFailures || !own.failed.isEmpty();
    ClassBits concerned = own.matched;
    concerned |= own.failed;
    if (_isBest && rule != 0) concerned = addAbove(rules()[rule].parent, sender, concerned, answers);
    concerned.forEach([&](size_t one) {
        const uint32_t decision = decisions[one];
        const bool isFailure = own.failed.has(one) && !isTakenBefore(rule, decision);
        ++answers.counts[isFailure ? Answer{Answer::Kind::Failed, rule} : Answer{Answer::Kind::Taken, decision}];
    });
}

// Adds those that do not match a rule, or one above it, for which best match looks at the topmost first. Tells the
// others.
ClassBits AnswerCounter::addAbove(uint32_t rule, size_t sender, ClassBits receivers, Answers& answers) const {
    if (rule != 0) receivers = addAbove(rules()[rule].parent, sender, std::move(receivers), answers);
    DecisionSpace::Checked checked = _space.check(0, rule, sender, receivers, true);
    receivers -= checked.matched;
    receivers.forEach([&](size_t one) {
        ++answers.counts[checked.failed.has(one) ? Answer{Answer::Kind::Failed, rule} : Answer{Answer::Kind::NotAbove}];
    });
    return std::move(checked.matched);
}

// Whether a rule takes a mail before it is found out that another rule cannot be checked: in first match one that comes
// earlier, in best match one that is not below the rule above.
bool AnswerCounter::isTakenBefore(uint32_t rule, uint32_t decision) const {
    if (decision >= rules().size()) return false;
    if (_isBest) return !isAtOrBelow(rules(), decision, rules()[rule].parent);
    return isAtOrBelow(rules(), decision, rule) || (decision < rule && !isAtOrBelow(rules(), rule, decision));
}

}  // namespace tool
