#include "rules/ref_checker.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "rules/child_walk.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "store/one_state.h"
#include "store/result.h"
#include "store/store_value.h"
#include "zxbase.h"

using namespace zxpol;

namespace {

// Whether a side of a condition is the list's name in parentheses. The last character is not looked at.
bool refersToList(const char* side, const char* name) {
    const size_t length = std::strlen(side);
    if (length <= 2 || side[0] != '(') return false;
    return kr_stricmp(std::string(side + 1, length - 2).c_str(), name) == 0;
}

// Whether an outcome of a task has the text `name`. One that is too long to be a name hides none behind it.
bool hasOutcomeText(ZxPolTask& task, const char* name) {
    char outcome[kNameSize];
    char text[kNameSize + 1];
    for (uint32_t index = 0;; ++index) {
        uint32_t outcomeSize = sizeof outcome;
        uint32_t textSize = kNameSize;
        int result = ZXPOL_S_OK;
        task.enumOutcome(index, outcome, &outcomeSize, text, &textSize, &result);
        if (hasReason(result, kReasonBufferTooSmall) && textSize > kNameSize) continue;
        if (failed(result)) return false;
        text[std::min(textSize, kNameSize)] = '\0';
        if (kr_stricmp(text, name) == 0) return true;
    }
}

// Opens a child, which knows its path: in a deep tree the walk must not keep another copy of each.
ChildStep openChildOf(ZxPolRule& rule, const char* rulePath, uint32_t index, std::unique_ptr<ZxPolRule>& child) {
    std::string path = rulePath;
    int ignored = ZXPOL_S_OK;
    return openChild(rule, index, path, child, &ignored);
}

}  // namespace

ZxPolRefChecker::ZxPolRefChecker(_ZxPolComHandle* hiveKey, int* err) {
    StoreKey key(hiveKey);
    int result = ZXPOL_S_OK;
    try {
        _handlers = {{ZXPOL_REF_CLASSIFICATION, &ZxPolRefChecker::_checkClassInRule},
                     {ZXPOL_REF_ADDRLIST, &ZxPolRefChecker::_checkAddrInRule}};
        // The key must not be let go of before there is memory for its new owner.
        std::unique_ptr<ZxPolRuleHive> hive(new ZxPolRuleHive(key.release(), 0));
        _hive = std::move(hive);
    } catch (const std::bad_alloc&) {
        result = ZXPOL_E_OUT_OF_MEMORY;
    }
    if (err != nullptr) *err = result;
}

ZxPolRefChecker::~ZxPolRefChecker() = default;

bool ZxPolRefChecker::checkReference(ZxPolRefEntity entity, const char* name, char* path, uint32_t* size, int* err) {
    if (err == nullptr) return false;
    if (name == nullptr || path == nullptr || size == nullptr) {
        *err = ZXPOL_E_INVALID_ARG;
        return false;
    }
    if (_hive == nullptr) {
        *err = ZXPOL_E_OUT_OF_MEMORY;
        return false;
    }
    std::string foundPath;
    // Of one state: a rule that moves meanwhile must not be missed at both its places.
    readOneState(
        _hive->hiveKey(), nullptr, err,
        [&] {
            const std::unique_ptr<ZxPolRule> root(_hive->openRootRule(err));
            if (failed(*err) || root == nullptr) return;
            *err = ZXPOL_S_OK;
            _find(root.get(), entity, name, foundPath);
        },
        [&] { foundPath.clear(); });
    if (failed(*err) || foundPath.empty()) return false;
    const auto needed = static_cast<uint32_t>(foundPath.size() + 1);
    // A buffer of exactly the size needed is refused.
    if (*size > needed) {
        std::memcpy(path, foundPath.c_str(), needed);
    } else {
        *err = ZXPOL_E_BUFFER_TOO_SMALL;
    }
    *size = needed;
    return true;
}

bool ZxPolRefChecker::_find(ZxPolRule* root, ZxPolRefEntity entity, const char* name, std::string& foundPath) {
    for (const _CheckHandler& handler : _handlers) {
        if (handler.entity == entity && _checkInRule(root, kRootPath, name, handler.test, foundPath)) return true;
    }
    return false;
}

bool ZxPolRefChecker::_checkInRule(ZxPolRule* rule, const char* rulePath, const char* name, _Test test,
                                   std::string& foundPath) {
    for (uint32_t index = 0;; ++index) {
        std::unique_ptr<ZxPolRule> child;
        switch (openChildOf(*rule, rulePath, index, child)) {
            case ChildStep::opened:
                if (_checkInRule(child.get(), child->name().c_str(), name, test, foundPath)) return true;
                break;
            case ChildStep::unopened:
                break;
            case ChildStep::ended:
                if (!(this->*test)(rule, name)) return false;
                foundPath = rulePath;
                return true;
            case ChildStep::failed:
                return false;
        }
    }
}

// Not inlined into the walk, nor is the next one: their buffers must not be in frames as many as the tree is deep.
__attribute__((noinline)) bool ZxPolRefChecker::_checkAddrInRule(ZxPolRule* rule, const char* name) {
    _ZxPolAddrPairCond pair;
    pair.sender[0] = pair.receiver[0] = '\0';
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        rule->enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, &result);
        if (failed(result)) return false;
        if (refersToList(pair.sender, name) || refersToList(pair.receiver, name)) return true;
    }
}

__attribute__((noinline)) bool ZxPolRefChecker::_checkClassInRule(ZxPolRule* rule, const char* name) {
    char taskName[kNameSize];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof taskName;
        int result = ZXPOL_S_OK;
        rule->enumTask(index, taskName, &size, &result);
        if (failed(result)) return false;
        const std::unique_ptr<ZxPolTask> task(rule->openTask(taskName, &result));
        if (task != nullptr && succeeded(result) && hasOutcomeText(*task, name)) return true;
    }
}
