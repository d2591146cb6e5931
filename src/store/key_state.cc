#include "store/key_state.h"

#include "store/optional_service.h"
#include "store/result.h"
#include "zxregistry.h"

#pragma weak zxreg_stamp
#pragma weak zxreg_identity

namespace zxpol {

namespace {

using Service = uint64_t (*)(_ZxPolComHandle*, int*);

Service whenOfTheStore(Service service) {
    return isOfTheStore(service) ? service : nullptr;
}

}  // namespace

uint64_t stampOf(_ZxPolComHandle* key, int* error) {
    static const Service service = whenOfTheStore(&zxreg_stamp);
    *error = ZXPOL_S_OK;
    return service != nullptr ? service(key, error) : 0;
}

KeyState stateOf(_ZxPolComHandle* key, int* error) {
    static const Service identityOf = whenOfTheStore(&zxreg_identity);
    KeyState state;
    state.stamp = stampOf(key, error);
    if (identityOf != nullptr && succeeded(*error)) state.identity = identityOf(key, error);
    return state;
}

}  // namespace zxpol
