#include "store/optional_service.h"

#include <dlfcn.h>

#include "zxregistry.h"

namespace zxpol {

namespace {

// Where a function was loaded from; null when that cannot be told.
const void* moduleOf(const void* function) {
    Dl_info info{};
    if (function == nullptr || dladdr(function, &info) == 0) return nullptr;
    return info.dli_fbase;
}

}  // namespace

bool isInStoreModule(const void* function) {
    const void* module = moduleOf(function);
    return module != nullptr && module == moduleOf(reinterpret_cast<const void*>(&zxreg_setValue));
}

}  // namespace zxpol
