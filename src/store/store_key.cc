#include "store/store_key.h"

#include "zxregistry.h"

namespace zxpol {

namespace {

// Takes what an opening operation returned: a handle counts only together with a success.
StoreKey take(_ZxPolComHandle* handle, int* error) {
    StoreKey key(handle);
    if (failed(*error)) return StoreKey();
    if (!key) *error = ZXPOL_E_EXCEPTION;
    return key;
}

}  // namespace

StoreKey StoreKey::open(_ZxPolComHandle* parent, const char* name, int* error) {
    *error = ZXPOL_S_OK;
    return take(zxreg_openKey(parent, name, error), error);
}

StoreKey StoreKey::create(_ZxPolComHandle* parent, const char* name, int* error) {
    *error = ZXPOL_S_OK;
    return take(zxreg_createKey(parent, name, error), error);
}

void StoreKey::close() noexcept {
    if (_handle == nullptr) return;
    int ignored = ZXPOL_S_OK;
    zxreg_closeKey(std::exchange(_handle, nullptr), &ignored);
}

void ensureKey(_ZxPolComHandle* parent, const char* name) {
    int ignored = ZXPOL_S_OK;
    StoreKey::create(parent, name, &ignored);
}

void enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_enumSubkey(key, index, name, size, error);
}

void deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_deleteKey(key, name, error);
}

}  // namespace zxpol
