// Handles: the checks that every function makes on them, and their making.
#include <new>

#include "frame/frame.h"

namespace zxpol::frame {

bool checkHandle(const _ZxPolComHandle* handle, uint32_t kind, int* error) {
    if (handle == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    // A store key's object is the store's own business.
    if (handle->kind != kind || (kind != ZXREG_HANDLE_KEY && handle->object == nullptr)) {
        *error = ZXPOL_E_WRONG_HANDLE;
        return false;
    }
    return true;
}

}  // namespace zxpol::frame

_ZxPolComHandle* makeHandle(void* object, uint32_t kind) {
    return new (std::nothrow) _ZxPolComHandle{kind, object};
}
