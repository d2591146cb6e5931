// A store library beside a program that brings its own store: it counts the calls that should never come.
#include "spy_registry.h"

#include "zxregistry.h"

namespace {

uint64_t calls = 0;

void refuse(int* error) {
    ++calls;
    if (error != nullptr) *error = ZXREG_E_WRONG_HANDLE;
}

}  // namespace

uint64_t zxspy_calls(void) {
    return calls;
}

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle*, const char*, int* error) {
    refuse(error);
    return nullptr;
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle*, const char*, int* error) {
    refuse(error);
    return nullptr;
}

void zxreg_closeKey(_ZxPolComHandle*, int* error) {
    refuse(error);
}

void zxreg_deleteKey(_ZxPolComHandle*, const char*, int* error) {
    refuse(error);
}

void zxreg_queryValue(_ZxPolComHandle*, const char*, uint32_t*, void*, uint32_t*, int* error) {
    refuse(error);
}

void zxreg_setValue(_ZxPolComHandle*, const char*, uint32_t, const void*, uint32_t, int* error) {
    refuse(error);
}

void zxreg_deleteValue(_ZxPolComHandle*, const char*, int* error) {
    refuse(error);
}

void zxreg_enumSubkey(_ZxPolComHandle*, uint32_t, char*, uint32_t*, int* error) {
    refuse(error);
}

void zxreg_enumValue(_ZxPolComHandle*, uint32_t, char*, uint32_t*, uint32_t*, void*, uint32_t*, int* error) {
    refuse(error);
}

void zxreg_beginUpdate(_ZxPolComHandle*, int* error) {
    refuse(error);
}

void zxreg_endUpdate(_ZxPolComHandle*, int* error) {
    refuse(error);
}

void zxreg_cancelUpdate(_ZxPolComHandle*, int* error) {
    refuse(error);
}

uint64_t zxreg_stamp(_ZxPolComHandle*, int* error) {
    refuse(error);
    return 0;
}

_ZxPolComHandle* zxreg_openStore(const char*, int* error) {
    refuse(error);
    return nullptr;
}

const char* zxreg_lastErrorText(void) {
    return "";
}
