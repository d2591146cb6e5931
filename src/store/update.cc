#include "store/update.h"

#include <utility>

#include "store/optional_service.h"
#include "zxregistry.h"

// Services that a host's store may lack.
#pragma weak zxreg_beginUpdate
#pragma weak zxreg_endUpdate

namespace zxpol {

namespace {

using Service = void (*)(_ZxPolComHandle*, int*);

// Both services, or none.
struct UpdateServices {
    Service begin = nullptr;
    Service end = nullptr;

    UpdateServices() {
        if (!isOfTheStore(&zxreg_beginUpdate) || !isOfTheStore(&zxreg_endUpdate)) return;
        begin = &zxreg_beginUpdate;
        end = &zxreg_endUpdate;
    }
};

const UpdateServices& services() {
    static const UpdateServices found;
    return found;
}

}  // namespace

bool canUpdate() {
    return services().begin != nullptr;
}

Update::Update(_ZxPolComHandle* key, int* error) : _key(key), _error(error) {
    if (services().begin == nullptr) return;
    int result = ZXPOL_S_OK;
    services().begin(_key, &result);
    _isOpen = _mayRun = succeeded(result);
    if (!_mayRun) *_error = result;
}

Update::~Update() {
    end();
}

bool Update::end() {
    if (!std::exchange(_isOpen, false)) return true;
    int result = ZXPOL_S_OK;
    services().end(_key, &result);
    if (failed(result)) *_error = result;
    return succeeded(result);
}

}  // namespace zxpol
