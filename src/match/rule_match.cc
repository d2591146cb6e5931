// Whether one rule applies to one sender and one receiver, and how exactly its conditions name them.
#include <cstring>
#include <memory>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "addrlist/normal_addr_list.h"
#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "pattern/cond_wildcard_pattern.h"
#include "rules/child_walk.h"
#include "rules/rule.h"
#include "store/one_state.h"
#include "store/result.h"
#include "store/update.h"

using namespace zxpol;

namespace {

// Where the address behind its kind begins: after the first ":" (smtp:a@example.com), if there is one.
const char* behindKind(const char* address) {
    const char* colon = address == nullptr ? nullptr : std::strchr(address, ':');
    return colon == nullptr ? address : colon + 1;
}

// The same, which is logged.
const char* withoutKind(const char* address) {
    const char* rest = behindKind(address);
    if (rest != address) ZXPOL_DEBUG(1, "split %s to %s", address, rest);
    return rest;
}

// The name in a reference to a list: all but the first and the last character.
std::string listName(const char* reference) {
    const size_t length = std::strlen(reference);
    return length < 2 ? std::string() : std::string(reference + 1, length - 2);
}

}  // namespace

// A condition of a rule, and the mail that it is compared with.
struct ZxPolRuleMatcher::Comparison {
    const ZxPolRule& rule;
    uint32_t index;  // of the condition
    const _ZxPolAddrPairCond& pair;
    const char* sender;
    const char* receiver;
};

// Not inlined into the walks: the pair must not be in their frames.
__attribute__((noinline)) bool ZxPolRuleMatcher::matchInThisRule(ZxPolRule* rule, const char* sender,
                                                                 const char* receiver, ZxPolPriority* priority,
                                                                 int* error) {
    if (error == nullptr) return false;
    *error = ZXPOL_S_OK;
    ZxPolPriority unasked;
    ZxPolPriority& highest = priority != nullptr ? *priority : unasked;
    highest.init();
    const bool areWeightsWanted = priority != nullptr || _observer != nullptr;
    _tell(ZXPOL_STEP_RULE, [&](_ZxPolMatchStep& step) { step.rulePath = pathOf(*rule); });
    bool isMatched = false;
    uint32_t decisive = 0;
    _ZxPolAddrPairCond pair;
    pair.sender[0] = pair.receiver[0] = '\0';
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        rule->enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, &result);
        if (failed(result)) {
            if (!isEnd(result)) _tellPassedOver(pathOf(*rule), result);
            break;
        }
        ZxPolPriority scratch;
        const bool isPairMatched =
            _matchPair({*rule, index, pair, sender, receiver}, areWeightsWanted ? &scratch : nullptr, error);
        if (failed(*error)) {
            isMatched = false;
            break;
        }
        if (!isPairMatched) continue;
        if (!isMatched || highest.compare(scratch, _priorityType()) < 0) {
            highest = scratch;
            decisive = index;
        }
        isMatched = true;
        if (priority == nullptr) break;
    }
    _tell(ZXPOL_STEP_RULE_CHECKED, [&](_ZxPolMatchStep& step) {
        step.rulePath = pathOf(*rule);
        step.result = *error;
        if (!isMatched) return;
        step.isMatched = 1;
        step.conditionIndex = decisive;
        step.senderWeight = highest.senderWeight();
        step.receiverWeight = highest.receiverWeight();
    });
    return isMatched;
}

// Whether both sides of a condition match, the receiver's first.
bool ZxPolRuleMatcher::_matchPair(const Comparison& comparison, ZxPolPriority* priority, int* error) {
    bool isMatched =
        _matchSide(comparison, ZXPOL_SIDE_RECEIVER, priority != nullptr ? &priority->receiverWeight() : nullptr, error);
    ZXPOL_DEBUG(2, "receiver: %s, pattern: %s, result: %d", comparison.receiver, comparison.pair.receiver,
                isMatched ? 1 : 0);
    if (failed(*error) || !isMatched) return false;
    isMatched =
        _matchSide(comparison, ZXPOL_SIDE_SENDER, priority != nullptr ? &priority->senderWeight() : nullptr, error);
    ZXPOL_DEBUG(2, "sender: %s, pattern: %s, result: %d", comparison.sender, comparison.pair.sender, isMatched ? 1 : 0);
    return isMatched && succeeded(*error);
}

bool ZxPolRuleMatcher::_matchSide(const Comparison& comparison, ZxPolMatchSide side, uint32_t* weight, int* error) {
    if (_observer != nullptr) return _matchObservedSide(comparison, side, weight, error);
    return side == ZXPOL_SIDE_RECEIVER ? compareAddress(comparison.receiver, comparison.pair.receiver, weight, error)
                                       : compareAddress(comparison.sender, comparison.pair.sender, weight, error);
}

// The same for an observer, who is told the entry of a list, too.
__attribute__((noinline, cold)) bool ZxPolRuleMatcher::_matchObservedSide(const Comparison& comparison,
                                                                          ZxPolMatchSide side, uint32_t* weight,
                                                                          int* error) {
    const bool isReceiver = side == ZXPOL_SIDE_RECEIVER;
    const char* address = isReceiver ? comparison.receiver : comparison.sender;
    const char* pattern = isReceiver ? comparison.pair.receiver : comparison.pair.sender;
    std::string entry;
    const bool isMatched = _compare(address, pattern, weight, &entry, error);
    _tell(ZXPOL_STEP_SIDE, [&](_ZxPolMatchStep& step) {
        step.rulePath = pathOf(comparison.rule);
        step.conditionIndex = comparison.index;
        step.side = side;
        step.pattern = pattern;
        step.address = behindKind(address);
        step.result = *error;
        if (!isMatched || failed(*error)) return;
        step.isMatched = 1;
        step.weight = *weight;
        step.entry = entry.empty() ? nullptr : entry.c_str();
    });
    return isMatched;
}

bool ZxPolRuleMatcher::compareAddress(const char* address, const char* pattern, uint32_t* weight, int* error) {
    if (error == nullptr) return false;
    return _compare(address, pattern, weight, nullptr, error);
}

// compareAddress; where `entry` is not null it receives the entry of a list that matched.
bool ZxPolRuleMatcher::_compare(const char* address, const char* pattern, uint32_t* weight, std::string* entry,
                                int* error) {
    *error = ZXPOL_S_OK;
    if (weight != nullptr) *weight = ZxPolPriority::minWeight();
    if (pattern == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    return *pattern == '(' ? _compareWithList(address, pattern, weight, entry, error)
                           : _compareWithPattern(address, pattern, weight);
}

// Asks the list that a condition refers to.
bool ZxPolRuleMatcher::_compareWithList(const char* address, const char* reference, uint32_t* weight,
                                        std::string* entry, int* error) {
    // Each further list would be waited for, too, and the match does not count.
    if (_isDisturbed) *error = kStateIsChanging;
    if (failed(*error)) return false;
    const std::unique_ptr<ZxPolAddrList> list(_addrListHive->openAddrList(listName(reference).c_str(), error));
    _isDisturbed = *error == kStateIsChanging && canUpdate();
    if (failed(*error)) return false;
    address = withoutKind(address);
    const bool isMatched = list->matchAddress(address, weight, _weightType(), error);
    if (entry != nullptr && isMatched) {
        // A directory list, which fails here, has no entries.
        const auto* normal = dynamic_cast<const ZxPolNormalAddrList*>(list.get());
        if (normal != nullptr) *entry = normal->findMatch(address, _weightType());
    }
    return isMatched;
}

bool ZxPolRuleMatcher::_compareWithPattern(const char* address, const char* text, uint32_t* weight) {
    address = withoutKind(address);
    const ZxPolCondWildcardPattern pattern(text);
    const bool isMatched = pattern == address;
    if (isMatched && weight != nullptr) *weight = ZxPolPriority::calcWeight(pattern, _weightType());
    return isMatched;
}
