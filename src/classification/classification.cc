#include "classification/classification.h"

#include <utility>

#include "classification/action.h"
#include "store/store_key.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

constexpr const char* kActionsKey = "actions";
constexpr const char* kActionsContainer = "actions\\";

}  // namespace

ZxPolClass::ZxPolClass(_ZxPolComHandle* classKey) : ZxPolKeyEntity(classKey, 1, kActionsContainer, 1) {}

// ---- actions ------------------------------------------------------------------------------------------------

ZxPolAction* ZxPolClass::openAction(const char* name, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey actionKey(openChild(name, error));
    if (failed(*error) || !actionKey) return nullptr;
    return new ZxPolAction(std::move(actionKey));
}

std::unique_ptr<ZxPolAction> ZxPolClass::_createAction(const char* name, const _ZxPolActionAttr* attrib,
                                                       uint32_t* order, int* error) {
    if (attrib == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    *order = attrib->order;
    return inUpdate(_entityKey(), error, [&]() -> std::unique_ptr<ZxPolAction> {
        StoreKey actionKey(createChild(name, error, order));
        if (failed(*error) || !actionKey) return nullptr;
        auto action = std::make_unique<ZxPolAction>(std::move(actionKey));
        action->makeSetting();
        action->setAttribute(attrib, error);
        if (*error == ZXPOL_E_NOT_SUPPORTED) *error = ZXPOL_S_OK;
        return succeeded(*error) ? std::move(action) : nullptr;
    });
}

ZxPolAction* ZxPolClass::createAction(const char* name, const _ZxPolActionAttr* attrib, int* error) {
    if (error == nullptr) return nullptr;
    uint32_t order = 0;
    return _createAction(name, attrib, &order, error).release();
}

ZxPolAction* ZxPolClass::createAction(const char* name, _ZxPolActionAttr* attrib, int* error) {
    if (error == nullptr) return nullptr;
    uint32_t order = 0;
    std::unique_ptr<ZxPolAction> action = _createAction(name, attrib, &order, error);
    if (action != nullptr) attrib->order = order;
    return action.release();
}

void ZxPolClass::deleteAction(const char* name, int* error) {
    deleteChild(name, error);
}

void ZxPolClass::enumAction(uint32_t index, char* buffer, uint32_t* size, int* error) {
    enumChildByOrder(index, buffer, size, error);
}

uint32_t ZxPolClass::setActionOrder(const char* name, uint32_t order, int* error) {
    return setChildOrder(name, order, error);
}

void ZxPolClass::makeActions() {
    ensureKey(_entityKey(), kActionsKey);
}

// ---- attributes ---------------------------------------------------------------------------------------------

void ZxPolClass::getAttribute(_ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return;
    if (attrib == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    readText(_entityKey(), "comment", attrib->comment, error);
    if (succeeded(*error)) readText(_entityKey(), "displayName", attrib->displayName, error);
}

void ZxPolClass::setAttribute(const _ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return;
    if (attrib == nullptr || !isTerminated(attrib->comment) || !isTerminated(attrib->displayName)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_entityKey(), error, [&] {
        writeText(_entityKey(), "comment", attrib->comment, error);
        writeText(_entityKey(), "displayName", attrib->displayName, error);
    });
}
