// The test whether a child's conditions are covered by its parent's.
#include <cstring>

#include "pattern/cond_wildcard_pattern.h"
#include "rules/mail_condition.h"
#include "rules/rule.h"
#include "store/result.h"

using namespace zxpol;

namespace {

bool isReference(const char* side) {
    const size_t length = std::strlen(side);
    return length != 0 && side[0] == '(' && side[length - 1] == ')';
}

// What a list holds is taken on trust: it is not known which addresses come and go.
bool isSideRelated(const char* parentSide, const char* childSide) {
    return isReference(parentSide) || isReference(childSide) || ZxPolCondWildcardPattern(parentSide) == childSide;
}

// Reads all conditions of a rule.
CondList readConditions(ZxPolRule& rule, int* error) {
    CondList pairs;
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair{};  // empty for each, as a text without a comma leaves it
        uint32_t size = sizeof pair;
        rule.enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, error);
        if (failed(*error)) break;
        pairs.push_back(pair);
    }
    if (isEnd(*error)) *error = ZXPOL_S_OK;
    return pairs;
}

}  // namespace

bool ZxPolMailCondition::_checkAddrPairRelated(const _ZxPolAddrPairCond* parentPair,
                                               const _ZxPolAddrPairCond* childPair) const {
    return isSideRelated(parentPair->sender, childPair->sender) &&
           isSideRelated(parentPair->receiver, childPair->receiver);
}

bool ZxPolMailCondition::findUncovered(ZxPolRule& parent, const unsigned char** conditions, CondList* uncovered,
                                       int* error) {
    const CondList parentPairs = readConditions(parent, error);
    if (failed(*error)) return false;
    bool areAllCovered = true;
    for (; *conditions != nullptr; ++conditions) {
        const _ZxPolAddrPairCond pair = terminatedCopy(asPair(*conditions));
        bool isCovered = false;
        for (const _ZxPolAddrPairCond& parentPair : parentPairs) {
            isCovered = isCovered || _checkAddrPairRelated(&parentPair, &pair);
        }
        if (isCovered) continue;
        areAllCovered = false;
        if (uncovered != nullptr) uncovered->push_back(pair);
    }
    return areAllCovered;
}

bool ZxPolMailCondition::checkHierarchy(ZxPolRule* parent, const unsigned char** conditions, unsigned char*** failed,
                                        int* error) {
    if (error == nullptr) return false;
    if (failed != nullptr) *failed = nullptr;
    if (parent == nullptr || conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    CondList uncovered;
    const bool areAllCovered = findUncovered(*parent, conditions, failed == nullptr ? nullptr : &uncovered, error);
    if (!uncovered.empty()) *failed = newCondArray(uncovered);
    return areAllCovered;
}

// ---- the checks and clean-ups of a rule -----------------------------------------------------------

bool ZxPolRule::_checkParentHierarchy(const unsigned char** conditions, ErrorConds* list, int* error) {
    *error = ZXPOL_S_OK;
    if (_name.empty()) return true;
    if (_anchor == nullptr) {
        *error = ZXPOL_E_NOT_SUPPORTED;
        return false;
    }
    const std::string parentPath = _name.substr(0, std::max<size_t>(1, _name.rfind('\\')));
    const std::unique_ptr<ZxPolRule> parent = RuleAnchor::openRule(_anchor, parentPath.c_str(), error);
    if (parent == nullptr) return false;
    CondList uncovered;
    const bool areAllCovered = ZxPolMailCondition(_key.get()).findUncovered(*parent, conditions, &uncovered, error);
    if (!uncovered.empty() && list != nullptr) list->add(_name, uncovered);
    return areAllCovered;
}

// Removes from all rules below `rule` the conditions that have no cover any more. The walk keeps its own
// frames small: trees may be deep.
void ZxPolRule::_deleteChildCondition(ZxPolRule& rule, ErrorConds* list, int* error) {
    for (uint32_t index = 0;; ++index) {
        const std::unique_ptr<ZxPolRule> child = rule._openChildAt(index, error);
        if (child == nullptr) return;
        _cleanUpChild(rule, *child, list, error);
        if (failed(*error)) return;
    }
}

// Cleans up one child and, where it lost conditions, the rules below it. When that fails further down, the
// child gets its conditions back.
void ZxPolRule::_cleanUpChild(ZxPolRule& rule, ZxPolRule& child, ErrorConds* list, int* error) {
    const CondList removed = child._removeUncovered(rule, error);
    if (removed.empty() || failed(*error)) return;
    const size_t place = list == nullptr ? 0 : list->add(child._name, removed);
    _deleteChildCondition(child, list, error);
    if (succeeded(*error)) return;
    int restored = ZXPOL_S_OK;
    ZxPolMailCondition(child._key.get()).addCondition(pointersTo(removed).data(), &restored);
    if (list != nullptr && succeeded(restored)) list->remove(place);
}

// Removes and returns this rule's conditions that `parent` does not cover.
__attribute__((noinline)) CondList ZxPolRule::_removeUncovered(ZxPolRule& parent, int* error) {
    CondList uncovered;
    const CondList present = readConditions(*this, error);
    if (failed(*error)) return uncovered;
    ZxPolMailCondition conditions(_key.get());
    conditions.findUncovered(parent, pointersTo(present).data(), &uncovered, error);
    if (succeeded(*error) && !uncovered.empty()) {
        conditions.removeCondition(pointersTo(uncovered).data(), error);
    }
    return uncovered;
}
