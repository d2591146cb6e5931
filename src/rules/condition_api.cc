// The flat functions on conditions.
#include "frame/frame.h"
#include "rules/rule.h"

using namespace zxpol;

namespace {

// A caller's one condition as a list; a null condition is a null list.
class OneCondition {
public:
    explicit OneCondition(const unsigned char* condition) : _entries{condition, nullptr} {}
    const unsigned char** list() { return _entries[0] == nullptr ? nullptr : _entries; }

private:
    const unsigned char* _entries[2];
};

}  // namespace

void zxpol_enumCondition(_ZxPolComHandle* rule, uint32_t index, unsigned char* pair, uint32_t* size, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) { object.enumCondition(index, pair, size, error); });
}

void zxpol_addCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) {
        object.addCondition(OneCondition(pair).list(), ZXPOL_COND_CHECK_NONE, nullptr, error);
    });
}

void zxpol_removeCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error) {
    frame::call<ZxPolRule>(rule, error, [&](ZxPolRule& object) {
        object.deleteCondition(OneCondition(pair).list(), ZXPOL_COND_CHECK_NONE, nullptr, error);
    });
}

void zxpol_addConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                          _ZxPolErrorCond*** errorConds, int* error) {
    frame::call<ZxPolRule>(rule, error,
                           [&](ZxPolRule& object) { object.addCondition(conditions, mode, errorConds, error); });
}

void zxpol_removeConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                             _ZxPolErrorCond*** errorConds, int* error) {
    frame::call<ZxPolRule>(rule, error,
                           [&](ZxPolRule& object) { object.deleteCondition(conditions, mode, errorConds, error); });
}

void zxpol_updateConditionEx(_ZxPolComHandle* rule, const uint32_t* indices, const unsigned char** conditions,
                             ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds, int* error) {
    frame::call<ZxPolRule>(
        rule, error, [&](ZxPolRule& object) { object.updateCondition(indices, conditions, mode, errorConds, error); });
}

void zxpol_freeErrorConds(_ZxPolErrorCond** errorConds, int* error) {
    if (errorConds == nullptr && error != nullptr) *error = ZXPOL_E_INVALID_ARG;
    ZxPolRule::freeErrorConds(errorConds, error);
}
