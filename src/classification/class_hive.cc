#include "classification/class_hive.h"

#include <memory>
#include <utility>

#include "classification/classification.h"
#include "store/store_key.h"
#include "store/update.h"

using namespace zxpol;

namespace {

constexpr const char* kHiveKey = "Classification";

}  // namespace

ZxPolClassHive::ZxPolClassHive(_ZxPolComHandle* hiveKey) : ZxPolKeyEntity(hiveKey, 0, "", 1) {}

ZxPolClassHive* ZxPolClassHive::open(_ZxPolComHandle* parent, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey hiveKey = StoreKey::create(parent, kHiveKey, error);
    if (!hiveKey) return nullptr;
    return new ZxPolClassHive(hiveKey.release());
}

ZxPolClass* ZxPolClassHive::openClassification(const char* name, int* error) {
    if (error == nullptr) return nullptr;
    StoreKey classKey(openChild(name, error));
    if (failed(*error) || !classKey) return nullptr;
    return new ZxPolClass(classKey.release());
}

ZxPolClass* ZxPolClassHive::createClassification(const char* name, const _ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return nullptr;
    // A missing record is found when it is to be written, after the key was made.
    if (attrib != nullptr && !ZxPolClass::isValidAttribute(attrib)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    return inUpdate(_entityKey(), error,
                    [&]() -> std::unique_ptr<ZxPolClass> {
                        StoreKey classKey(createChild(name, error, nullptr));
                        if (failed(*error) || !classKey) return nullptr;
                        std::unique_ptr<ZxPolClass> made(new ZxPolClass(classKey.release()));
                        made->makeActions();
                        made->setAttribute(attrib, error);
                        if (*error == ZXPOL_E_NOT_SUPPORTED) *error = ZXPOL_S_OK;
                        return succeeded(*error) ? std::move(made) : nullptr;
                    })
        .release();
}

void ZxPolClassHive::deleteClassification(const char* name, int* error) {
    deleteChild(name, error);
}

void ZxPolClassHive::enumClassification(uint32_t index, char* buffer, uint32_t* size, int* error) {
    enumChild(index, buffer, size, error);
}
