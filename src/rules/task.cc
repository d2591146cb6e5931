#include "rules/task.h"

#include <utility>

#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

namespace {

constexpr const char* kOutcomesKey = "Classification";
constexpr const char* kSettingKey = "setting";

bool isFlag(int32_t number) {
    return number == 0 || number == 1;
}

bool isMissing(const char* text) {
    return text == nullptr || *text == '\0';
}

}  // namespace

ZxPolTask::ZxPolTask(_ZxPolComHandle* taskKey) : ZxPolTask(StoreKey(taskKey)) {}

ZxPolTask::ZxPolTask(StoreKey taskKey) : _key(std::move(taskKey)) {
    int ignored = ZXPOL_S_OK;
    _outcomes = StoreKey::create(_key.get(), kOutcomesKey, &ignored);
}

ZxPolTask::~ZxPolTask() = default;

// ---- attributes -------------------------------------------------------------------------------------

void ZxPolTask::getAttribute(_ZxPolTaskAttr* attr, int* error) {
    if (error == nullptr) return;
    if (attr == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    // What fails before the last step is told by the field alone.
    readTextOrEmpty(_key.get(), "comment", attr->comment, error);
    readTextOrEmpty(_key.get(), "displayName", attr->displayName, error);
    readNumber(_key.get(), "order", &attr->order, error);
    readNumber(_key.get(), "filter", &attr->filter, error);
    readNumber(_key.get(), "enable", &attr->enable, error);
    readNumber(_key.get(), "overridable", &attr->overridable, error);
    attr->setting = StoreKey::open(_key.get(), kSettingKey, error).release();
}

bool ZxPolTask::isValidAttribute(const _ZxPolTaskAttr* attr) {
    return attr != nullptr && isFlag(attr->enable) && isFlag(attr->overridable) && isTerminated(attr->displayName) &&
           isTerminated(attr->comment);
}

void ZxPolTask::setAttribute(const _ZxPolTaskAttr* attr, int* error) {
    if (error == nullptr) return;
    if (!isValidAttribute(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_key.get(), error, [&] {
        writeText(_key.get(), "comment", attr->comment, error);
        if (succeeded(*error)) writeText(_key.get(), "displayName", attr->displayName, error);
        if (succeeded(*error)) writeNumber(_key.get(), "filter", attr->filter, error);
        if (succeeded(*error)) writeNumber(_key.get(), "enable", static_cast<uint32_t>(attr->enable), error);
        if (succeeded(*error)) writeNumber(_key.get(), "overridable", static_cast<uint32_t>(attr->overridable), error);
    });
}

void ZxPolTask::makeSetting() {
    ensureKey(_key.get(), kSettingKey);
}

// ---- outcomes -----------------------------------------------------------------------------------------

// Makes sure that the key of the outcomes is open.
bool ZxPolTask::_hasOutcomes(int* error) {
    if (!_outcomes) _outcomes = StoreKey::create(_key.get(), kOutcomesKey, error);
    return static_cast<bool>(_outcomes);
}

void ZxPolTask::getOutcome(const char* name, char* value, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (isMissing(name) || size == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
    } else if (_hasOutcomes(error)) {
        uint32_t type = 0;
        queryValue(_outcomes.get(), name, &type, value, size, error);
    }
}

void ZxPolTask::addOutcome(const char* name, const char* value, int* error) {
    if (error == nullptr) return;
    if (isMissing(name) || isMissing(value)) {
        *error = ZXPOL_E_INVALID_ARG;
    } else if (_hasOutcomes(error)) {
        writeText(_outcomes.get(), name, value, error);
    }
}

void ZxPolTask::deleteOutcome(const char* name, int* error) {
    if (error == nullptr) return;
    if (isMissing(name)) {
        *error = ZXPOL_E_INVALID_ARG;
    } else if (_hasOutcomes(error)) {
        deleteValue(_outcomes.get(), name, error);
    }
}

void ZxPolTask::enumOutcome(uint32_t index, char* name, uint32_t* nameSize, char* value, uint32_t* valueSize,
                            int* error) {
    if (error == nullptr) return;
    if (name == nullptr || nameSize == nullptr || valueSize == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
    } else if (_hasOutcomes(error)) {
        enumValue(_outcomes.get(), index, name, nameSize, nullptr, value, valueSize, error);
    }
}
