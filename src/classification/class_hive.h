// ZxPolClassHive: the entry to the classifications.
#pragma once

#include <cstdint>

#include "store/key_entity.h"
#include "zxpolicy.h"

class ZxPolClass;

/**
 * The classification hive: opens, creates, lists and deletes classifications, which are the subkeys of its key
 * "Classification" in the store's own order. It owns that key. Classifications may outlive the hive. Invariants: the
 * key is open as long as the hive lives, and nothing is cached. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged. Classifications returned belong to the caller; null on failure.
 */
class ZXPOL_API ZxPolClassHive : public ZxPolKeyEntity {
public:
    /// Takes `hiveKey` over.
    explicit ZxPolClassHive(_ZxPolComHandle* hiveKey);

    /// Opens the hive below a key of the caller's, making it when missing.
    static ZxPolClassHive* open(_ZxPolComHandle* parent, int* error);

    /// Opens the classification `name`. ZXPOL_E_INVALID_ARG: null or empty name.
    ZxPolClass* openClassification(const char* name, int* error);

    /// Creates the classification `name`, or opens an existing one, and writes its attributes. ZXPOL_E_INVALID_ARG:
    /// null or empty name, a text without NUL: nothing is created; or null record. A key made before a later failure,
    /// that of a null record included, stays in the store.
    ZxPolClass* createClassification(const char* name, const _ZxPolCommAttrib* attrib, int* error);

    /// Deletes the classification `name` with its actions and their settings. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteClassification(const char* name, int* error);

    /// The name of the `index`-th classification in the store's order; sizes are the store's. ZXPOL_E_INVALID_ARG: null
    /// buffer or size. Past the end the store's code of reason 12.
    void enumClassification(uint32_t index, char* buffer, uint32_t* size, int* error);
};
