// ZxPolAddrListHive: the entry to the address lists.
#pragma once

#include <cstdint>
#include <memory>

#include "store/key_entity.h"
#include "zxpolicy.h"

class ZxPolAddrList;

/**
 * The address-list hive: opens, creates, lists and deletes address lists, which are the subkeys of its key
 * "AddressList" in the store's own order. Each list says itself of which kind it is, in its value "type". Lists may
 * outlive the hive. Invariants: the key is open as long as the hive lives, and nothing is cached. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged. Lists returned belong to the caller; null on failure.
 */
class ZXPOL_API ZxPolAddrListHive : public ZxPolKeyEntity {
public:
    /// Takes `hiveKey` over.
    explicit ZxPolAddrListHive(_ZxPolComHandle* hiveKey);

    /// The hive's key, which stays the hive's.
    _ZxPolComHandle* hiveKey() const { return _entityKey(); }

    /// Opens the hive below a key of the caller's, making it when missing.
    static ZxPolAddrListHive* open(_ZxPolComHandle* parent, int* error);

    /// Opens the list `name`. The first object on a normal list reads all of it. ZXPOL_E_INVALID_ARG: null or empty
    /// name. ZXPOL_E_INVALID_FORMAT: no known kind, or an address value of another type than multi-string. A kind that
    /// cannot be read: the store's code.
    ZxPolAddrList* openAddrList(const char* name, int* error);

    /// Creates the list `name`, or opens an existing one, and writes its attributes. ZXPOL_E_INVALID_ARG: null
    /// argument, empty name, unknown type, a text without NUL; nothing is created. A key made before a later failure
    /// stays in the store.
    ZxPolAddrList* createAddrList(const char* name, const _ZxPolAddrListAttr* attr, int* error);

    /// Deletes the list `name`, and its cache whatever came of that. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteAddrList(const char* name, int* error);

    /// The name of the `index`-th list in the store's order; sizes are the store's. ZXPOL_E_INVALID_ARG: null
    /// buffer or size. Past the end the store's code of reason 12.
    void enumAddrList(uint32_t index, char* buffer, uint32_t* size, int* error);
};
