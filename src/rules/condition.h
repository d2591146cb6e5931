// ZxPolCondition: what a rule's set of conditions can do, whatever the conditions are about.
#pragma once

#include <cstdint>

#include "zxpolicy.h"

class ZxPolRule;

/**
 * The conditions of one rule, kept as values of the rule's key. A condition crosses the interface as the
 * bytes of a record whose shape the derived class knows; lists are arrays of pointers to records, closed by
 * a null pointer. Invariant: the key, which is borrowed from the rule, is open as long as the object lives. One thread
 * at a time.
 *
 * All operations report through `error`, last; codes of the store pass through unchanged.
 */
class ZXPOL_API ZxPolCondition {
public:
    /// `ruleKey` is borrowed.
    explicit ZxPolCondition(_ZxPolComHandle* ruleKey) : key(ruleKey) {}
    ZxPolCondition(const ZxPolCondition&) = delete;
    ZxPolCondition& operator=(const ZxPolCondition&) = delete;

    /// Adds conditions. One that is there already is no error.
    virtual void addCondition(const unsigned char** conditions, int* error) = 0;

    /// Removes conditions.
    virtual void removeCondition(const unsigned char** conditions, int* error) = 0;

    /// Puts the given conditions in the place of all present ones.
    virtual void replaceCondition(const unsigned char** conditions, int* error) = 0;

    /// Puts the given conditions in the place of those at the given enumeration indices.
    virtual void updateCondition(const uint32_t* indices, const unsigned char** conditions, int* error) = 0;

    /// The `index`-th condition and, where `valueName` (256 bytes) is not null, the name of its value.
    virtual void enumCondition(uint32_t index, unsigned char* record, uint32_t* size, char* valueName, int* error) = 0;

    /// Whether each of `conditions` is covered by one of the rule `parent`. Where `failed` is not null it
    /// receives the uncovered ones, or null.
    virtual bool checkHierarchy(ZxPolRule* parent, const unsigned char** conditions, unsigned char*** failed,
                                int* error) = 0;

    virtual ~ZxPolCondition();

protected:
    _ZxPolComHandle* key;  ///< the rule's key; borrowed
};
