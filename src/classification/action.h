// ZxPolAction: one thing to do with mails of a classification.
#pragma once

#include "store/store_key.h"
#include "zxpolicy.h"

/**
 * One action: its attributes and its key "setting", whose contents are the caller's business, as is the meaning of its
 * type. The object owns the action's key. Invariants: the key is open as long as the object lives, and nothing is
 * cached. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged.
 */
class ZXPOL_API ZxPolAction {
public:
    /// Takes `actionKey` over.
    explicit ZxPolAction(_ZxPolComHandle* actionKey);
    /// @overload
    explicit ZxPolAction(zxpol::StoreKey actionKey);
    ~ZxPolAction();
    ZxPolAction(const ZxPolAction&) = delete;
    ZxPolAction& operator=(const ZxPolAction&) = delete;

    /// Reads the comment and, when that succeeded, all others, whichever fail, and opens the subkey "setting" for the
    /// caller, who closes it; null when it cannot be opened. The result is that of the last one, the type; on failure
    /// no key is handed out. A number that cannot be read keeps what the record held, a text becomes empty.
    /// ZXPOL_E_INVALID_ARG: null record.
    void getAttribute(_ZxPolActionAttr* attr, int* error);

    /// Writes comment, display name and type, whichever fail; the result is that of the type. ZXPOL_E_INVALID_ARG: null
    /// record, a text without NUL; nothing is written.
    void setAttribute(const _ZxPolActionAttr* attr, int* error);

    /// Whether `attr` may be written: not null, texts with NUL.
    static bool isValidAttribute(const _ZxPolActionAttr* attr);

    /// Makes the subkey "setting"; a failure is passed over here and found when the attributes are read.
    void makeSetting();

private:
    zxpol::StoreKey _key;
};
