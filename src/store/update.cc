#include "store/update.h"

#include <dlfcn.h>

#include "zxregistry.h"

// Services that a host's store may lack.
#pragma weak zxreg_beginUpdate
#pragma weak zxreg_endUpdate

namespace zxpol {

namespace {

using Service = void (*)(_ZxPolComHandle*, int*);

// Where a function was loaded from; null when that cannot be told.
template <class Function>
const void* moduleOf(Function* function) {
    Dl_info info{};
    if (function == nullptr || dladdr(reinterpret_cast<const void*>(function), &info) == 0) return nullptr;
    return info.dli_fbase;
}

// The store's update services. They are used only when they come from the same module as the store's
// other operations: a program that brings a store without them must not have its keys handed to the
// services of another store that happens to be loaded beside it.
struct UpdateServices {
    Service begin = nullptr;
    Service end = nullptr;

    UpdateServices() {
        const void* store = moduleOf(&zxreg_setValue);
        if (store == nullptr || moduleOf(&zxreg_beginUpdate) != store || moduleOf(&zxreg_endUpdate) != store) return;
        begin = &zxreg_beginUpdate;
        end = &zxreg_endUpdate;
    }
};

const UpdateServices& services() {
    static const UpdateServices found;
    return found;
}

}  // namespace

Update::Update(_ZxPolComHandle* key, int* error) : _key(key), _error(error) {
    if (services().begin == nullptr) return;
    int result = ZXPOL_S_OK;
    services().begin(_key, &result);
    _isOpen = _mayRun = succeeded(result);
    if (!_mayRun) *_error = result;
}

Update::~Update() {
    if (!_isOpen) return;
    int result = ZXPOL_S_OK;
    services().end(_key, &result);
    if (failed(result)) *_error = result;
}

}  // namespace zxpol
