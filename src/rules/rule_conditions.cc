// The conditions of a rule: reading, and changing with or without regard to the rule tree.
#include "rules/rule.h"
#include "store/result.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

using Collected = std::unique_ptr<ErrorConds>;

// The frame of the three changing operations: change(list) does the work as one update, collecting into
// `list`, which is null when the caller wants none, and returns whether the caller is to have the list.
template <class Change>
void changeConditions(_ZxPolComHandle* key, const unsigned char** conditions, _ZxPolErrorCond*** errorConds, int* error,
                      Change change) {
    if (error == nullptr) return;
    if (errorConds != nullptr) *errorConds = nullptr;
    if (conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    const Collected collected = inUpdate(key, error, [&]() -> Collected {
        Collected list = errorConds == nullptr ? nullptr : std::make_unique<ErrorConds>();
        return change(list.get()) ? std::move(list) : nullptr;
    });
    if (collected != nullptr) *errorConds = collected->toFlat();
}

}  // namespace

// Fails for a rule whose conditions are not address pairs.
void ZxPolRule::_requireMailConditions(int* error) {
    int32_t matchType = 0;
    readNumber(_key.get(), "matchType", &matchType, error);
    if (succeeded(*error) && matchType != 0) *error = ZXPOL_E_NOT_SUPPORTED;
}

void ZxPolRule::enumCondition(uint32_t index, unsigned char* record, uint32_t* size, int* error) {
    if (error == nullptr) return;
    _requireMailConditions(error);
    if (succeeded(*error)) _conditions.enumCondition(index, record, size, nullptr, error);
}

void ZxPolRule::addCondition(const unsigned char** conditions, ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds,
                             int* error) {
    changeConditions(_key.get(), conditions, errorConds, error, [&](ErrorConds* list) {
        _requireMailConditions(error);
        if (failed(*error)) return false;
        if (mode != ZXPOL_COND_CHECK_NONE && !_checkParentHierarchy(conditions, list, error)) {
            if (failed(*error)) return false;
            *error = ZXPOL_E_CONDITION_CHECK;
            return true;
        }
        ZxPolMailCondition(_key.get()).addCondition(conditions, error);
        return false;
    });
}

void ZxPolRule::deleteCondition(const unsigned char** conditions, ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds,
                                int* error) {
    changeConditions(_key.get(), conditions, errorConds, error, [&](ErrorConds* list) {
        _requireMailConditions(error);
        if (failed(*error)) return false;
        ZxPolMailCondition(_key.get()).removeCondition(conditions, error);
        if (failed(*error) || mode == ZXPOL_COND_CHECK_NONE) return false;
        _deleteChildCondition(*this, list, error);
        return succeeded(*error);
    });
}

void ZxPolRule::updateCondition(const uint32_t* indices, const unsigned char** conditions, ZxPolCondCheck mode,
                                _ZxPolErrorCond*** errorConds, int* error) {
    changeConditions(_key.get(), conditions, errorConds, error, [&](ErrorConds* list) {
        _requireMailConditions(error);
        if (failed(*error)) return false;
        if (mode == ZXPOL_COND_CHECK_NONE) {
            _replaceOrUpdate(indices, conditions, error);
            return false;
        }
        if (!_checkParentHierarchy(conditions, list, error)) {
            if (failed(*error)) return false;
            *error = ZXPOL_E_CONDITION_CHECK;
            return true;
        }
        _replaceOrUpdate(indices, conditions, error);
        if (succeeded(*error)) _deleteChildCondition(*this, list, error);
        return true;
    });
}

void ZxPolRule::_replaceOrUpdate(const uint32_t* indices, const unsigned char** conditions, int* error) {
    ZxPolMailCondition present(_key.get());
    if (indices == nullptr) {
        present.replaceCondition(conditions, error);
    } else {
        present.updateCondition(indices, conditions, error);
    }
}

void ZxPolRule::freeErrorConds(_ZxPolErrorCond** errorConds, int* /*error*/) {
    zxpol::freeErrorConds(errorConds);
}
