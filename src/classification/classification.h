// ZxPolClass: a named category of mail with its actions.
#pragma once

#include <cstdint>

#include "store/key_entity.h"
#include "zxpolicy.h"

class ZxPolAction;

/**
 * One classification: its display name, its comment, and its ordered actions, which lie in its subkey "actions". The
 * object owns the classification's key. Two objects on one classification share nothing but the store. Invariants: the
 * key is open as long as the object lives, and nothing is cached but the order of the actions, as ZxPolKeyEntity says.
 * One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged. Actions returned belong to the caller; null on failure.
 */
class ZXPOL_API ZxPolClass : public ZxPolKeyEntity {
public:
    /// Takes `classKey` over.
    explicit ZxPolClass(_ZxPolComHandle* classKey);

    /// Opens the action `name`. ZXPOL_E_INVALID_ARG: null or empty name.
    ZxPolAction* openAction(const char* name, int* error);

    /// Creates the action `name`, or opens an existing one, and writes its attributes. `attrib->order` is the wanted
    /// position (0 or past the end appends); the position given to a new action is written back to it, although the
    /// record is one to read, also when a later step fails: the record must be in memory that can be written.
    /// ZXPOL_E_INVALID_ARG: null argument, empty name, an order of 2^31 or above, a text without NUL; nothing is
    /// created. The key made before a later failure stays in the store.
    ZxPolAction* createAction(const char* name, const _ZxPolActionAttr* attrib, int* error);

    /// Deletes the action `name` with its setting; later ones move up. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteAction(const char* name, int* error);

    /// The name of the `index`-th action by position; index 0 reads the store. *size becomes the length with NUL.
    /// ZXPOL_E_INVALID_ARG: null buffer or size. Past the end a code of reason 12.
    void enumAction(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// Moves an action and returns the position given, 0 on failure. ZXPOL_E_INVALID_ARG: null or empty name, position
    /// below 1. ZXPOL_E_EXCEPTION: the action has none.
    uint32_t setActionOrder(const char* name, uint32_t order, int* error);

    /// Reads the comment and, when that succeeded, the display name. ZXPOL_E_INVALID_ARG: null record.
    void getAttribute(_ZxPolCommAttrib* attrib, int* error);

    /// Writes the comment and the display name, whichever fail; the result is that of the display name.
    /// ZXPOL_E_INVALID_ARG: null record, a text without NUL; nothing is written.
    void setAttribute(const _ZxPolCommAttrib* attrib, int* error);

    /// Whether `attrib` may be written: not null, texts with NUL.
    static bool isValidAttribute(const _ZxPolCommAttrib* attrib);

    /// Makes the subkey of the actions; a failure is passed over here, and found when there are to be actions.
    void makeActions();
};
