// The flat function on references from rules.
#include "frame/frame.h"
#include "rules/ref_checker.h"
#include "store/store_key.h"

using namespace zxpol;

namespace {

constexpr const char* kRuleHiveKey = "Rule";

bool isReferred(_ZxPolComHandle* store, ZxPolRefEntity entity, const char* name, char* path, uint32_t* size,
                int* error) {
    StoreKey hiveKey = StoreKey::create(store, kRuleHiveKey, error);
    if (!hiveKey) return false;
    ZxPolRefChecker checker(hiveKey.release(), error);
    return succeeded(*error) && checker.checkReference(entity, name, path, size, error);
}

}  // namespace

int zxpol_checkReferInRule(_ZxPolComHandle* key, ZxPolRefEntity entity, const char* name, char* path, uint32_t* size,
                           int* error) {
    return frame::callWithPolicy(
        key, error, [&](_ZxPolComHandle* store) { return isReferred(store, entity, name, path, size, error) ? 1 : 0; });
}
