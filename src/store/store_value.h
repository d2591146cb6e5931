// The operations of the store on values: raw, and as the numbers and texts that the policy is made of.
#pragma once

#include <cstddef>
#include <cstdint>

#include "store/result.h"
#include "zxpolicy.h"

namespace zxpol {

// Longest name of a value or key with its NUL, as the library's buffers hold it.
constexpr uint32_t kNameSize = ZXPOL_NAME_SIZE;

// ---- raw values; the outputs and codes are the store's ------------------------------------------

// Reads the value `name`; `type` and `data` may be null; *size is the capacity of `data` on entry.
void queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error);
void setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size, int* error);
void deleteValue(_ZxPolComHandle* key, const char* name, int* error);

// The `index`-th value; `type`, `data` and `dataSize` may be null.
void enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
               uint32_t* dataSize, int* error);

// ---- numbers --------------------------------------------------------------------------------------

// Reads a number. A value of another type or width gives ZXPOL_E_INVALID_FORMAT; *number is written on
// success only.
void readNumber(_ZxPolComHandle* key, const char* name, uint32_t* number, int* error);
void readNumber(_ZxPolComHandle* key, const char* name, int32_t* number, int* error);
void writeNumber(_ZxPolComHandle* key, const char* name, uint32_t number, int* error);

// ---- texts ----------------------------------------------------------------------------------------

// Reads a text of at most `capacity` bytes into `field`, which always ends up NUL-terminated on success,
// whatever bytes the store holds.
void readText(_ZxPolComHandle* key, const char* name, char* field, uint32_t capacity, int* error);

template <size_t N>
void readText(_ZxPolComHandle* key, const char* name, char (&field)[N], int* error) {
    readText(key, name, field, static_cast<uint32_t>(N), error);
}

// The same; a text that cannot be read is empty.
template <size_t N>
void readTextOrEmpty(_ZxPolComHandle* key, const char* name, char (&field)[N], int* error) {
    readText(key, name, field, error);
    if (failed(*error)) field[0] = '\0';
}

// Writes `text` with its NUL.
void writeText(_ZxPolComHandle* key, const char* name, const char* text, int* error);

// Whether a text field of a caller's record ends within its width.
bool isTerminated(const char* field, size_t width);

template <size_t N>
bool isTerminated(const char (&field)[N]) {
    return isTerminated(field, N);
}

}  // namespace zxpol
