// Best match: from a rule that applies the walk goes down into the child of the highest priority, level by level.
#include <memory>

#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "rules/child_walk.h"
#include "rules/rule.h"
#include "store/result.h"

using namespace zxpol;

// The best of the children looked at so far; without a rule when none has matched.
struct ZxPolRuleMatcher::Candidate {
    std::unique_ptr<ZxPolRule> rule;
    std::string path;
    ZxPolPriority priority;
    bool isUnbeatable = false;
};

bool ZxPolRuleMatcher::matchInRuleTreeBest(ZxPolRule* rule, const char* rulePath, const char* sender,
                                           const char* receiver, std::string& matchedPath, int* error) {
    if (error == nullptr) return false;
    ZXPOL_DEBUG(2, "Checking rule %s", rulePath);
    ZxPolPriority priority;
    const bool isMatched = matchInThisRule(rule, sender, receiver, &priority, error);
    if (failed(*error) || !isMatched) return false;
    ZXPOL_DEBUG(2, "Matched in rule %s", rulePath);
    matchedPath = rulePath;
    if (_isUnbeatable(priority)) {
        ZXPOL_DEBUG(2, "Sender and Receiver are both fully qualified in rule %s", rulePath);
        return true;
    }
    // This rule has matched, whatever becomes of the search for a better one.
    int ignored = ZXPOL_S_OK;
    matchInChildRuleBest(rule, rulePath, sender, receiver, matchedPath, &ignored);
    return true;
}

bool ZxPolRuleMatcher::matchInChildRuleBest(ZxPolRule* rule, const char* rulePath, const char* sender,
                                            const char* receiver, std::string& matchedPath, int* error) {
    if (error == nullptr) return false;
    *error = ZXPOL_S_OK;
    std::string path = rulePath;
    std::unique_ptr<ZxPolRule> parent;
    for (bool isMatched = false;; isMatched = true) {
        Candidate best;
        _findBestChild(*rule, path, sender, receiver, best, error);
        if (failed(*error)) {
            // A level further down cannot take back the match above it.
            if (isMatched) *error = ZXPOL_S_OK;
            return isMatched;
        }
        if (best.rule == nullptr) return isMatched;
        matchedPath = best.path;
        if (best.isUnbeatable) return true;
        parent = std::move(best.rule);
        rule = parent.get();
        path = std::move(best.path);
    }
}

// Looks through the children of one rule; those that are not the best are closed at once. `path` is that of `rule`,
// and is so again on success.
void ZxPolRuleMatcher::_findBestChild(ZxPolRule& rule, std::string& path, const char* sender, const char* receiver,
                                      Candidate& best, int* error) {
    const size_t length = path.size();
    for (uint32_t index = 0; !best.isUnbeatable; ++index) {
        std::unique_ptr<ZxPolRule> child;
        const ChildStep step = openChild(rule, index, path, child, error);
        if (step == ChildStep::ended) break;
        if (step != ChildStep::opened) _tellPassedOver(path.c_str(), *error);
        if (step == ChildStep::failed) return;
        ZxPolPriority priority;
        if (step == ChildStep::opened) {
            ZXPOL_DEBUG(2, "Checking rule %s", path.c_str());
            if (matchInThisRule(child.get(), sender, receiver, &priority, error) && succeeded(*error)) {
                _takeIfBetter(std::move(child), path, priority, best);
            }
        }
        if (failed(*error)) {
            ZXPOL_DEBUG(2, "Fail to check rule %s (%#010x), ignore", path.c_str(), static_cast<unsigned>(*error));
        }
        path.resize(length);
    }
    *error = ZXPOL_S_OK;
}

// Makes a matching child the best one when its priority is higher; of equal ones the earlier stays.
void ZxPolRuleMatcher::_takeIfBetter(std::unique_ptr<ZxPolRule> child, const std::string& path,
                                     const ZxPolPriority& priority, Candidate& best) const {
    ZXPOL_DEBUG(2, "Matched in rule %s, checking its priority-(%d, %d) with previous matched priority-(%d, %d)",
                path.c_str(), static_cast<int>(priority.senderWeight()), static_cast<int>(priority.receiverWeight()),
                static_cast<int>(best.priority.senderWeight()), static_cast<int>(best.priority.receiverWeight()));
    ZxPolMatchFate fate = ZXPOL_FATE_NOT_BETTER;
    if (_isUnbeatable(priority)) {
        ZXPOL_DEBUG(2, "Sender and Receiver are both fully qualified in rule %s", path.c_str());
        fate = ZXPOL_FATE_UNBEATABLE;
    } else if (best.rule == nullptr || priority.compare(best.priority, _priorityType()) > 0) {
        ZXPOL_DEBUG(2, "Rule %s has higher priority", path.c_str());
        fate = ZXPOL_FATE_BETTER;
    }
    _tell(ZXPOL_STEP_CHOICE, [&](_ZxPolMatchStep& step) {
        step.rulePath = path.c_str();
        step.fate = fate;
        step.senderWeight = priority.senderWeight();
        step.receiverWeight = priority.receiverWeight();
        step.otherPath = best.rule != nullptr ? best.path.c_str() : nullptr;
    });
    if (fate == ZXPOL_FATE_NOT_BETTER) return;
    best.isUnbeatable = fate == ZXPOL_FATE_UNBEATABLE;
    best.path = path;
    best.priority = priority;
    best.rule = std::move(child);
}

// Whether no other priority can be higher.
bool ZxPolRuleMatcher::_isUnbeatable(const ZxPolPriority& priority) const {
    return priority.compare(ZxPolPriority::mMaxPriority, _priorityType()) == 0;
}
