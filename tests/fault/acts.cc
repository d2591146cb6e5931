#include "fault/acts.h"

#include <cstring>

namespace zxtest {

namespace {

std::string sides(const unsigned char* record) {
    const auto* pair = reinterpret_cast<const _ZxPolAddrPairCond*>(record);
    return std::string(pair->sender) + "," + pair->receiver;
}

// Calls a creating function and adds the position to its answer.
template <class Close, class Create, class Attributes, class... More>
Outcome creating(Close close, Create create, _ZxPolComHandle* parent, const char* name, Attributes attr, More... more) {
    Outcome outcome = opening(close, create, parent, name, &attr, more...);
    if (ZX_SUCCESS(outcome.result) != 0) outcome.answer += " at " + std::to_string(attr.order);
    return outcome;
}

}  // namespace

Outcome openRuleHive(World& world) {
    return opening(zxpol_closeRuleHive, zxpol_openRuleHive, world.store, 0);
}

Outcome openAddrListHive(World& world) {
    return opening(zxpol_closeAddrListHive, zxpol_openAddrListHive, world.store);
}

Outcome openClassificationHive(World& world) {
    return opening(zxpol_closeClassificationHive, zxpol_openClassificationHive, world.store);
}

Outcome createRule(_ZxPolComHandle* parent, const char* name, uint32_t order, CondList conditions) {
    return creating(zxpol_closeRule, zxpol_createRule, parent, name, ruleAttr(name, order), conditions.get());
}

Outcome createTask(_ZxPolComHandle* rule, const char* name, uint32_t order) {
    return creating(zxpol_closeTask, zxpol_createTask, rule, name, taskAttr("made", 3, 1, order));
}

Outcome createAction(_ZxPolComHandle* classification, const char* name, uint32_t order) {
    return creating(zxpol_closeAction, zxpol_createAction, classification, name, actionAttr("made", 9, order));
}

Outcome enumerateConditions(_ZxPolComHandle* rule) {
    Outcome outcome;
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        lib(zxpol_enumCondition, rule, index, reinterpret_cast<unsigned char*>(&pair), &size, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += sides(bytesOf(pair)) + "|";
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
}

void settleList(Outcome& outcome, _ZxPolErrorCond** list) {
    if (list == nullptr) return;
    for (_ZxPolErrorCond** entry = list; *entry != nullptr; ++entry) {
        outcome.answer += std::string((*entry)->ruleName) + ":";
        for (unsigned char** pair = (*entry)->conds; *pair != nullptr; ++pair)
            outcome.answer += sides(*pair) + ";";
        outcome.answer += "|";
    }
    int error = outcome.result;
    zxpol_freeErrorConds(list, &error);
}

Outcome changeAddresses(_ZxPolComHandle* list, void (*function)(_ZxPolComHandle*, const char**, int*),
                        const Addresses& addresses) {
    std::vector<const char*> array;
    for (const std::string& address : addresses)
        array.push_back(address.c_str());
    array.push_back(nullptr);
    return resultOf(function, list, array.data());
}

Outcome convert(int (*function)(char*, unsigned*, const char*, unsigned), const std::string& input, unsigned capacity) {
    Outcome outcome;
    char output[4096] = "untouched";
    unsigned size = capacity;
    outcome.result = lib(function, output, &size, input.data(), static_cast<unsigned>(input.size()));
    outcome.answer = std::string(output, sizeof output) + std::to_string(size);
    // A buffer that is too small is told the size needed.
    const bool isSizeKept = size == capacity || outcome.result == ZXPOL_E_BUFFER_TOO_SMALL;
    if (ZX_FAILURE(outcome.result) != 0 && (!isSizeKept || std::strcmp(output, "untouched") != 0)) {
        outcome.violation = "a failing conversion must write nothing";
    }
    return outcome;
}

}  // namespace zxtest
