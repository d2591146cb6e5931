// The version of the library and of the policy in a store.
#include "frame/version.h"

#include "frame/frame.h"
#include "store/store_value.h"

namespace {

constexpr const char* kVersionValue = "version";

// A search of the built library for "%getversion" finds this text, spelling included. No code reads it.
__attribute__((used, retain)) const char kVersionMarker[] = "Korvexia&Libraray-1.2.0.1229.%getversion";

void assignIfWanted(unsigned* target, unsigned number) {
    if (target != nullptr) *target = number;
}

}  // namespace

int ZX_SUCCESS(int code) {
    return zxpol::succeeded(code) ? 1 : 0;
}

int ZX_FAILURE(int code) {
    return zxpol::failed(code) ? 1 : 0;
}

void libzxpolicy(unsigned* major, unsigned* minor, unsigned* patch, unsigned* build) {
    assignIfWanted(major, zxpol::kVersionMajor);
    assignIfWanted(minor, zxpol::kVersionMinor);
    assignIfWanted(patch, zxpol::kVersionPatch);
    assignIfWanted(build, zxpol::kVersionBuild);
}

bool checkVersion(_ZxPolComHandle* key, int* /*error*/, uint32_t* version) {
    int result = ZXPOL_S_OK;
    uint32_t stored = 0;
    zxpol::readNumber(key, kVersionValue, &stored, &result);
    if (zxpol::failed(result)) {
        // A fresh store: stamp it. A store that cannot be written is still usable for reading.
        stored = zxpol::kPolicyVersion;
        zxpol::writeNumber(key, kVersionValue, stored, &result);
    }
    if (version != nullptr) *version = stored;
    return (stored >> 24) <= zxpol::kPolicyMajorSupported;
}

uint32_t zxpol_getVersion(_ZxPolComHandle* key, int* error) {
    return zxpol::frame::callWithKey(key, error, [&](_ZxPolComHandle* storeKey) {
        *error = ZXPOL_S_OK;
        uint32_t version = 0;
        checkVersion(storeKey, error, &version);
        return version;
    });
}
