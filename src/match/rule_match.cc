// Whether one rule applies to one sender and one receiver, and how exactly its conditions name them.
#include <cstring>
#include <memory>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "pattern/cond_wildcard_pattern.h"
#include "rules/rule.h"
#include "store/result.h"

using namespace zxpol;

namespace {

// The address behind its kind: what follows the first ":" (smtp:a@example.com), or all of it.
const char* withoutKind(const char* address) {
    const char* colon = address == nullptr ? nullptr : std::strchr(address, ':');
    if (colon == nullptr) return address;
    ZXPOL_DEBUG(1, "split %s to %s", address, colon + 1);
    return colon + 1;
}

// The name in a reference to a list: all but the first and the last character.
std::string listName(const char* reference) {
    const size_t length = std::strlen(reference);
    return length < 2 ? std::string() : std::string(reference + 1, length - 2);
}

}  // namespace

// Not inlined into the walks: the pair must not be in their frames.
__attribute__((noinline)) bool ZxPolRuleMatcher::matchInThisRule(ZxPolRule* rule, const char* sender,
                                                                 const char* receiver, ZxPolPriority* priority,
                                                                 int* error) {
    if (error == nullptr) return false;
    *error = ZXPOL_S_OK;
    if (priority != nullptr) priority->init();
    bool isMatched = false;
    _ZxPolAddrPairCond pair;
    pair.sender[0] = pair.receiver[0] = '\0';
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        rule->enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, &result);
        if (failed(result)) return isMatched;
        ZxPolPriority scratch;
        const bool isPairMatched = _matchPair(pair, sender, receiver, priority != nullptr ? &scratch : nullptr, error);
        if (failed(*error)) return false;
        if (!isPairMatched) continue;
        if (priority == nullptr) return true;
        if (priority->compare(scratch, _priorityType()) < 0) *priority = scratch;
        isMatched = true;
    }
}

// Whether both sides of a condition match, the receiver's first.
bool ZxPolRuleMatcher::_matchPair(const _ZxPolAddrPairCond& pair, const char* sender, const char* receiver,
                                  ZxPolPriority* priority, int* error) {
    bool isMatched =
        compareAddress(receiver, pair.receiver, priority != nullptr ? &priority->receiverWeight() : nullptr, error);
    ZXPOL_DEBUG(2, "receiver: %s, pattern: %s, result: %d", receiver, pair.receiver, isMatched ? 1 : 0);
    if (failed(*error) || !isMatched) return false;
    isMatched = compareAddress(sender, pair.sender, priority != nullptr ? &priority->senderWeight() : nullptr, error);
    ZXPOL_DEBUG(2, "sender: %s, pattern: %s, result: %d", sender, pair.sender, isMatched ? 1 : 0);
    return isMatched && succeeded(*error);
}

bool ZxPolRuleMatcher::compareAddress(const char* address, const char* pattern, uint32_t* weight, int* error) {
    if (error == nullptr) return false;
    *error = ZXPOL_S_OK;
    if (weight != nullptr) *weight = ZxPolPriority::minWeight();
    if (pattern == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    return *pattern == '(' ? _compareWithList(address, pattern, weight, error)
                           : _compareWithPattern(address, pattern, weight);
}

// Asks the list that a condition refers to.
bool ZxPolRuleMatcher::_compareWithList(const char* address, const char* reference, uint32_t* weight, int* error) {
    const std::unique_ptr<ZxPolAddrList> list(_addrListHive->openAddrList(listName(reference).c_str(), error));
    if (failed(*error)) return false;
    return list->matchAddress(withoutKind(address), weight, _weightType(), error);
}

bool ZxPolRuleMatcher::_compareWithPattern(const char* address, const char* text, uint32_t* weight) {
    address = withoutKind(address);
    const ZxPolCondWildcardPattern pattern(text);
    const bool isMatched = pattern == address;
    if (isMatched && weight != nullptr) *weight = ZxPolPriority::calcWeight(pattern, _weightType());
    return isMatched;
}
