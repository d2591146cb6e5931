#include "classification/action.h"

#include <utility>

#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

constexpr const char* kSettingKey = "setting";

}  // namespace

ZxPolAction::ZxPolAction(_ZxPolComHandle* actionKey) : ZxPolAction(StoreKey(actionKey)) {}

ZxPolAction::ZxPolAction(StoreKey actionKey) : _key(std::move(actionKey)) {}

ZxPolAction::~ZxPolAction() = default;

void ZxPolAction::getAttribute(_ZxPolActionAttr* attr, int* error) {
    if (error == nullptr) return;
    if (attr == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    readText(_key.get(), "comment", attr->comment, error);
    if (failed(*error)) return;
    // From here on, what fails before the last step is told by the field alone.
    readTextOrEmpty(_key.get(), "displayName", attr->displayName, error);
    StoreKey setting = StoreKey::open(_key.get(), kSettingKey, error);
    readNumber(_key.get(), "order", &attr->order, error);
    readNumber(_key.get(), "actionType", &attr->actionType, error);
    attr->setting = succeeded(*error) ? setting.release() : nullptr;
}

bool ZxPolAction::isValidAttribute(const _ZxPolActionAttr* attr) {
    return attr != nullptr && isTerminated(attr->comment) && isTerminated(attr->displayName);
}

void ZxPolAction::setAttribute(const _ZxPolActionAttr* attr, int* error) {
    if (error == nullptr) return;
    if (!isValidAttribute(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_key.get(), error, [&] {
        writeText(_key.get(), "comment", attr->comment, error);
        writeText(_key.get(), "displayName", attr->displayName, error);
        writeNumber(_key.get(), "actionType", attr->actionType, error);
    });
}

void ZxPolAction::makeSetting() {
    ensureKey(_key.get(), kSettingKey);
}
