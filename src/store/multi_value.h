// ZxPolMultiValue: numbered values prefix1, prefix2, ... of one store key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zxpolicy.h"

/**
 * A list kept as values of one key whose names are a prefix followed by a number from 1. The names are read
 * once, at construction; afterwards the object knows only of its own changes. It is short-lived: make one
 * for each operation or batch.
 *
 * Invariants: `names` holds the existing names that carry the prefix, ascending by number (a name without
 * digits first), then the names handed out. Dense numbering, entry i being number i + 1, holds as long as only
 * this class names and deletes the values. The key is borrowed. One thread at a time.
 */
class ZXPOL_API ZxPolMultiValue {
public:
    /// `key` is borrowed and must outlive the object; `prefix` is copied (at most 255 characters). Failures to
    /// read the names are silent: the names read before are known and enumerated. But what a number stands for is
    /// then not known, and the operations that name or delete values give that failure rather than lose a value.
    ZxPolMultiValue(_ZxPolComHandle* key, const char* prefix);
    ~ZxPolMultiValue();
    ZxPolMultiValue(const ZxPolMultiValue&) = delete;
    ZxPolMultiValue& operator=(const ZxPolMultiValue&) = delete;

    /// Reads the names from the store and appends those that carry the prefix.
    void _cacheValueName();

    /// Whether `name` is the prefix, in any letter case, followed by nothing but digits.
    bool _prefixMatch(const char* name) const;

    /// Hands out the next free name: the prefix and the number of names plus 1. Writes no value. *size becomes
    /// the length without NUL. ZXPOL_E_INVALID_ARG: null buffer or size. ZXPOL_E_BUFFER_TOO_SMALL: nothing is
    /// handed out.
    void createValueName(char* buffer, uint32_t* size, int* error);

    /// The number of names that are known.
    uint32_t count() const { return static_cast<uint32_t>(names.size()); }

    /// Why there may be more names: the failure that ended their reading, or success.
    int result() const { return readResult; }

    /// The `index`-th name. *size becomes the length without NUL, also with ZXPOL_E_BUFFER_TOO_SMALL: a caller
    /// who retries adds 1. ZXPOL_E_INVALID_ARG: null buffer or size, or a size of 0. ZXPOL_E_NO_MORE_ITEMS.
    void enumValueName(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// Deletes the value numbered `index` + 1, or the value `name`, and moves the later values down by one.
    /// ZXPOL_E_INVALID_ARG: null, without the prefix, or with number 0 or none. ZXPOL_E_NOT_FOUND: the list is
    /// empty. A value above 2048 bytes cannot be moved: the store's code, part-way.
    void deleteValueName(uint32_t index, int* error);
    /// @overload
    void deleteValueName(const char* name, int* error);

    /// Deletes all values, the last one first, so that none has to move; what is left after a failure is a dense list.
    /// ZXPOL_E_INVALID_ARG: the first name has no number, and nothing is deleted.
    void deleteAll(int* error);

private:
    void _moveDown(size_t number, int* error);

    char prefix[256];
    _ZxPolComHandle* key;
    int readResult = ZXPOL_S_OK;  // why the names could not be read to their end
    std::vector<std::string> names;
};
