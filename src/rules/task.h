// ZxPolTask: one thing that a rule asks to be done with the mails it matches.
#pragma once

#include "store/store_key.h"
#include "zxpolicy.h"

/**
 * One task: its attributes, and its outcomes, which are named texts. The object owns the task's key and its
 * subkey "Classification", which holds the outcomes. Invariants: the task's key is open as long as the object lives,
 * and nothing is cached. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged.
 */
class ZXPOL_API ZxPolTask {
public:
    /// Takes `taskKey` over. Makes the subkey of the outcomes when it is missing; when that fails, it is tried
    /// again with the first operation on outcomes.
    explicit ZxPolTask(_ZxPolComHandle* taskKey);
    /// @overload
    explicit ZxPolTask(zxpol::StoreKey taskKey);
    ~ZxPolTask();
    ZxPolTask(const ZxPolTask&) = delete;
    ZxPolTask& operator=(const ZxPolTask&) = delete;

    /// Reads all attributes, whichever fail, and opens the subkey "setting" for the caller, who closes it. The
    /// result is that of the last step; `setting` is null when that fails. A number that cannot be read keeps what
    /// the record held, so preset what is to hold then; a text becomes empty. ZXPOL_E_INVALID_ARG: null record.
    void getAttribute(_ZxPolTaskAttr* attr, int* error);

    /// Writes all attributes but the position and the setting, up to the first failure. ZXPOL_E_INVALID_ARG:
    /// null record, enable or overridable neither 0 nor 1, a text without NUL.
    void setAttribute(const _ZxPolTaskAttr* attr, int* error);

    /// Whether `attr` may be written: not null, flags 0 or 1, texts with NUL.
    static bool isValidAttribute(const _ZxPolTaskAttr* attr);

    /// Reads an outcome's text; *size is the capacity, then the size with NUL, as the store has it; a null
    /// `value` asks for the size. ZXPOL_E_INVALID_ARG: null or empty name, null size.
    void getOutcome(const char* name, char* value, uint32_t* size, int* error);

    /// Creates or replaces an outcome. ZXPOL_E_INVALID_ARG: null or empty name or value.
    void addOutcome(const char* name, const char* value, int* error);

    /// Deletes an outcome. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteOutcome(const char* name, int* error);

    /// The `index`-th outcome in the store's order, sizes as the store has them; `value` may be null.
    /// ZXPOL_E_INVALID_ARG: null name or size.
    void enumOutcome(uint32_t index, char* name, uint32_t* nameSize, char* value, uint32_t* valueSize, int* error);

    /// Makes the subkey "setting"; a failure is passed over here and found when the attributes are read.
    void makeSetting();

private:
    bool _hasOutcomes(int* error);

    zxpol::StoreKey _key;
    zxpol::StoreKey _outcomes;
};
