#include "store/store_value.h"

#include <algorithm>
#include <cstring>

#include "zxregistry.h"

namespace zxpol {

void queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_queryValue(key, name, type, data, size, error);
}

void setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_setValue(key, name, type, data, size, error);
}

void deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_deleteValue(key, name, error);
}

void enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
               uint32_t* dataSize, int* error) {
    *error = ZXPOL_S_OK;
    zxreg_enumValue(key, index, name, nameSize, type, data, dataSize, error);
}

void readNumber(_ZxPolComHandle* key, const char* name, uint32_t* number, int* error) {
    uint32_t type = ZXREG_NUMBER;
    uint32_t value = 0;
    uint32_t size = sizeof value;
    queryValue(key, name, &type, &value, &size, error);
    if (failed(*error)) return;
    if (type != ZXREG_NUMBER || size != sizeof value) {
        *error = ZXPOL_E_INVALID_FORMAT;
        return;
    }
    *number = value;
}

void readNumber(_ZxPolComHandle* key, const char* name, int32_t* number, int* error) {
    uint32_t value = 0;
    readNumber(key, name, &value, error);
    if (succeeded(*error)) *number = static_cast<int32_t>(value);
}

void writeNumber(_ZxPolComHandle* key, const char* name, uint32_t number, int* error) {
    setValue(key, name, ZXREG_NUMBER, &number, sizeof number, error);
}

void readText(_ZxPolComHandle* key, const char* name, char* field, uint32_t capacity, int* error) {
    uint32_t type = ZXREG_STRING;
    uint32_t size = capacity;
    queryValue(key, name, &type, field, &size, error);
    if (failed(*error)) return;
    field[std::min(size, capacity - 1)] = '\0';
}

void writeText(_ZxPolComHandle* key, const char* name, const char* text, int* error) {
    setValue(key, name, ZXREG_STRING, text, static_cast<uint32_t>(std::strlen(text) + 1), error);
}

bool isTerminated(const char* field, size_t width) {
    return std::memchr(field, '\0', width) != nullptr;
}

}  // namespace zxpol
