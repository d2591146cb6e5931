#include "analysis/decision_space.h"

#include <algorithm>

#include "analysis/analysis_limit.h"
#include "pattern/priority.h"

namespace tool {

namespace {

// The entries of the tables of weights that are made before an answer is given up.
constexpr size_t kMaxWeights = 200000000;

// Patterns belong to no policy in particular.
constexpr uint32_t kAnyPolicy = UINT32_MAX;

}  // namespace

// ---- classes of one side ----------------------------------------------------------------------------------

uint32_t SideClasses::add(const std::string& side, uint32_t policy, const StoredRules& stored) {
    const std::optional<std::string> name = listAskedFor(side);
    const ConditionList* list = name ? &stored.lists.at(*name) : nullptr;
    if (list != nullptr && ZX_FAILURE(list->failure)) return ClassCondition::kFails;
    const auto [place, isNew] = _tests.emplace(std::make_pair(name ? policy : kAnyPolicy, side), _space.testCount());
    if (!isNew) return place->second;
    const uint32_t test = _space.addTest();
    _texts.push_back(side);
    if (list == nullptr) {
        _space.addPattern(test, side);
    } else {
        for (const std::string& entry : list->entries)
            _space.addEntry(test, entry);
    }
    return test;
}

void SideClasses::close() {
    _classes = _space.classes();
    _testCount = _texts.size();
    if (_testCount != 0 && _classes.size() > kMaxWeights / _testCount)
        throw AnalysisLimit("the conditions tell too many addresses apart");
    _matching.assign(_testCount, ClassBits(_classes.size()));
    _weights.assign(_classes.size() * _testCount, 0);
    _wellFormed = ClassBits(_classes.size());
    for (size_t one = 0; one < _classes.size(); ++one) {
        if (!_classes[one].isMalformed) _wellFormed.add(one);
        for (const MatchedTest& matched : _classes[one].matched) {
            _matching[matched.test].add(one);
            _weights[one * _testCount + matched.test] = static_cast<uint16_t>(matched.weight);
        }
    }
}

// ---- both sides -------------------------------------------------------------------------------------------

DecisionSpace::DecisionSpace(std::vector<const StoredRules*> policies, const MatchOptions& options)
    : _policies(std::move(policies)), _options(options), _senders(options.weight), _receivers(options.weight) {
    for (uint32_t policy = 0; policy < _policies.size(); ++policy) {
        const StoredRules& stored = *_policies[policy];
        _conditions.emplace_back();
        for (const StoredRule& rule : stored.rules) {
            _conditions.back().emplace_back();
            for (const StoredRule::Condition& condition : rule.conditions)
                _conditions.back().back().push_back({_senders.add(condition.sender, policy, stored),
                                                     _receivers.add(condition.receiver, policy, stored)});
        }
    }
    _senders.close();
    _receivers.close();
}

DecisionSpace::Checked DecisionSpace::check(uint32_t policy, uint32_t rule, size_t sender, const ClassBits& receivers,
                                            bool isBest) const {
    if (!isBest) return checkUpToFirst(policy, rule, sender, receivers);
    ClassBits matched(receivers.size());
    ClassBits failed = compareAll(policy, rule, sender, receivers,
                                  [&](const ClassCondition&, const ClassBits& hit) { matched |= hit; });
    matched -= failed;
    return {std::move(matched), std::move(failed)};
}

// Conditions are looked at in order, the receiver's side first; a failure ends the look at this rule.
DecisionSpace::Checked DecisionSpace::checkUpToFirst(uint32_t policy, uint32_t rule, size_t sender,
                                                     const ClassBits& receivers) const {
    Checked checked{ClassBits(receivers.size()), ClassBits(receivers.size())};
    ClassBits open = receivers;
    for (const ClassCondition& condition : _conditions[policy][rule]) {
        if (condition.receiver == ClassCondition::kFails) {
            checked.failed |= open;
            return checked;
        }
        ClassBits hit = open;
        hit &= _receivers.matching(condition.receiver);
        if (condition.sender == ClassCondition::kFails) {
            checked.failed |= hit;
            open -= hit;
        } else if (_senders.matches(sender, condition.sender)) {
            checked.matched |= hit;
            open -= hit;
        }
    }
    return checked;
}

template <class Visit>
ClassBits DecisionSpace::compareAll(uint32_t policy, uint32_t rule, size_t sender, const ClassBits& receivers,
                                    Visit visit) const {
    ClassBits failed(receivers.size());
    ClassBits open = receivers;
    for (const ClassCondition& condition : _conditions[policy][rule]) {
        if (condition.receiver == ClassCondition::kFails) {
            failed |= open;
            return failed;
        }
        ClassBits hit = open;
        hit &= _receivers.matching(condition.receiver);
        if (condition.sender == ClassCondition::kFails) {
            failed |= hit;
            open -= hit;
        } else if (_senders.matches(sender, condition.sender)) {
            visit(condition, hit);
        }
    }
    return failed;
}

// ---- first match ------------------------------------------------------------------------------------------

class DecisionSpace::FirstMatch {
public:
    FirstMatch(const DecisionSpace& space, uint32_t policy, size_t sender)
        : _space(space),
          _policy(policy),
          _sender(sender),
          _open(space.receivers().size(), true),
          _decisions(space.receivers().size(), kNoRule) {}

    std::vector<uint32_t> run() {
        walk(0);
        return std::move(_decisions);
    }

private:
    // Children come before their parent. A rule that cannot be checked is passed over, but for the root.
    void walk(uint32_t rule) {
        for (uint32_t child : _space.policy(_policy).rules[rule].children)
            walk(child);
        const Checked checked = _space.checkUpToFirst(_policy, rule, _sender, _open);
        take(checked.matched, rule);
        if (rule == 0) take(checked.failed, kMatchFails);
    }

    void take(const ClassBits& receivers, uint32_t decision) {
        receivers.forEach([&](size_t one) { _decisions[one] = decision; });
        _open -= receivers;
    }

    const DecisionSpace& _space;
    uint32_t _policy;
    size_t _sender;
    ClassBits _open;  // the receivers without a rule as yet
    std::vector<uint32_t> _decisions;
};

// ---- best match -------------------------------------------------------------------------------------------

class DecisionSpace::BestMatch {
public:
    BestMatch(const DecisionSpace& space, uint32_t policy, size_t sender)
        : _space(space), _policy(policy), _sender(sender), _decisions(space.receivers().size(), kNoRule) {}

    std::vector<uint32_t> run() {
        const Graded root = grade(0, ClassBits(_space.receivers().size(), true));
        root.failed.forEach([&](size_t one) { _decisions[one] = kMatchFails; });
        ClassBits below = root.matched;
        root.matched.forEach([&](size_t one) {
            _decisions[one] = 0;
            if (isUnbeatable(root.priorities[one])) below.remove(one);
        });
        descend(0, below);
        return std::move(_decisions);
    }

private:
    struct Graded {
        ClassBits matched;
        ClassBits failed;
        std::vector<ZxPolPriority> priorities;
    };

    ZxPolMatchPriorityType priorityType() const { return _space._options.priority; }

    bool isUnbeatable(const ZxPolPriority& priority) const {
        return priority.compare(ZxPolPriority::mMaxPriority, priorityType()) == 0;
    }

    Graded grade(uint32_t rule, const ClassBits& receivers) const {
        const size_t size = receivers.size();
        Graded graded{ClassBits(size), ClassBits(size), std::vector<ZxPolPriority>(size)};
        const auto visit = [&](const ClassCondition& condition, const ClassBits& hit) {
            graded.matched |= hit;
            const uint32_t senderWeight = _space._senders.weight(_sender, condition.sender);
            hit.forEach([&](size_t one) {
                const ZxPolPriority priority(senderWeight, _space._receivers.weight(one, condition.receiver));
                if (graded.priorities[one].compare(priority, priorityType()) < 0) graded.priorities[one] = priority;
            });
        };
        graded.failed = _space.compareAll(_policy, rule, _sender, receivers, visit);
        graded.matched -= graded.failed;
        return graded;
    }

    // Finds the best child of a rule for each receiver, and goes on below it.
    void descend(uint32_t rule, const ClassBits& receivers) {
        const std::vector<uint32_t>& children = _space.policy(_policy).rules[rule].children;
        if (children.empty() || receivers.isEmpty()) return;
        struct Best {
            uint32_t child = kNoRule;
            ZxPolPriority priority;
        };
        std::vector<Best> best(receivers.size());
        ClassBits open = receivers, settled(receivers.size());
        for (uint32_t child : children) {
            const Graded graded = grade(child, open);
            graded.matched.forEach([&](size_t one) {
                const ZxPolPriority& priority = graded.priorities[one];
                const bool isSettled = isUnbeatable(priority);
                if (!isSettled && best[one].child != kNoRule &&
                    priority.compare(best[one].priority, priorityType()) <= 0)
                    return;
                best[one] = {child, priority};
                if (!isSettled) return;
                open.remove(one);
                settled.add(one);
            });
        }
        std::map<uint32_t, ClassBits> below;
        receivers.forEach([&](size_t one) {
            if (best[one].child == kNoRule) return;
            _decisions[one] = best[one].child;
            if (!settled.has(one)) below.emplace(best[one].child, ClassBits(receivers.size())).first->second.add(one);
        });
        for (const auto& [child, chosen] : below)
            descend(child, chosen);
    }

    const DecisionSpace& _space;
    uint32_t _policy;
    size_t _sender;
    std::vector<uint32_t> _decisions;
};

std::vector<uint32_t> DecisionSpace::decide(uint32_t policy, size_t sender, bool isBest) const {
    return isBest ? BestMatch(*this, policy, sender).run() : FirstMatch(*this, policy, sender).run();
}

}  // namespace tool
