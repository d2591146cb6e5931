#include "classification/classification.h"

#include <memory>
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

ZxPolAction* ZxPolClass::createAction(const char* name, const _ZxPolActionAttr* attrib, int* error) {
    if (error == nullptr) return nullptr;
    if (!ZxPolAction::isValidAttribute(attrib)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    // The one field that comes back in a record to read.
    auto* order = const_cast<uint32_t*>(&attrib->order);
    return inUpdate(_entityKey(), error,
                    [&]() -> std::unique_ptr<ZxPolAction> {
                        StoreKey actionKey(createChild(name, error, order));
                        if (failed(*error) || !actionKey) return nullptr;
                        auto action = std::make_unique<ZxPolAction>(std::move(actionKey));
                        action->makeSetting();
                        action->setAttribute(attrib, error);
                        if (*error == ZXPOL_E_NOT_SUPPORTED) *error = ZXPOL_S_OK;
                        return succeeded(*error) ? std::move(action) : nullptr;
                    })
        .release();
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

bool ZxPolClass::isValidAttribute(const _ZxPolCommAttrib* attrib) {
    return attrib != nullptr && isTerminated(attrib->comment) && isTerminated(attrib->displayName);
}

void ZxPolClass::setAttribute(const _ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return;
    if (!isValidAttribute(attrib)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_entityKey(), error, [&] {
        writeText(_entityKey(), "comment", attrib->comment, error);
        writeText(_entityKey(), "displayName", attrib->displayName, error);
    });
}
