// The owner of one open store key, and the operations of the store on keys.
#pragma once

#include <cstdint>
#include <utility>

#include "store/result.h"
#include "zxpolicy.h"

namespace zxpol {

// Owns at most one open store key and closes it exactly once. Move-only.
class StoreKey {
public:
    StoreKey() noexcept = default;
    explicit StoreKey(_ZxPolComHandle* owned) noexcept : _handle(owned) {}
    StoreKey(StoreKey&& other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}
    StoreKey& operator=(StoreKey&& other) noexcept {
        if (this != &other) {
            close();
            _handle = std::exchange(other._handle, nullptr);
        }
        return *this;
    }
    StoreKey(const StoreKey&) = delete;
    StoreKey& operator=(const StoreKey&) = delete;
    ~StoreKey() { close(); }

    // Opens the existing key `name` (a path) below `parent`; empty with the store's code on failure.
    static StoreKey open(_ZxPolComHandle* parent, const char* name, int* error);

    // Opens `name` below `parent`, creating it when missing; the empty name is `parent` itself.
    static StoreKey create(_ZxPolComHandle* parent, const char* name, int* error);

    _ZxPolComHandle* get() const noexcept { return _handle; }
    explicit operator bool() const noexcept { return _handle != nullptr; }

    // Hands the key over to the caller, who closes it.
    _ZxPolComHandle* release() noexcept { return std::exchange(_handle, nullptr); }

    // Closes the key now; the store's own result is of no use to anyone and is dropped.
    void close() noexcept;

private:
    _ZxPolComHandle* _handle = nullptr;
};

// Makes the key `name` below `parent` when it is missing, and leaves it closed. A failure is passed over: whoever
// needs the key reports that it is missing.
void ensureKey(_ZxPolComHandle* parent, const char* name);

// The name of the `index`-th subkey; *size is the buffer's capacity on entry.
void enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error);

// Deletes the subkey `name`, which must have no subkeys.
void deleteKey(_ZxPolComHandle* key, const char* name, int* error);

}  // namespace zxpol
