// ZxPolMailCondition: the conditions of a rule on the sender and the receiver of a mail.
#pragma once

#include <string>
#include <vector>

#include "rules/condition.h"
#include "rules/error_conds.h"

/**
 * The address pairs of one rule. A record is a _ZxPolAddrPairCond; in the store a pair is the string value
 * "conditionN" of the rule's key, N counted from 1, holding the sender, a comma and the receiver.
 *
 * Invariant: the cache holds names and texts as the last reading from the store (enumeration at index 0)
 * found them, in the order of the numbered values.
 */
class ZXPOL_API ZxPolMailCondition : public ZxPolCondition {
public:
    /// `ruleKey` is borrowed; nothing is read yet.
    explicit ZxPolMailCondition(_ZxPolComHandle* ruleKey);
    ~ZxPolMailCondition() override;

    /// Adds the pairs, trimmed. Pairs that are there already (case ignored) and invalid pairs are logged and
    /// passed over. ZXPOL_E_INVALID_ARG: null list. ZXPOL_E_INVALID_FORMAT: pairs were invalid, the others
    /// were written. A store failure on writing ends the operation; what was written stays. When the present
    /// pairs cannot be read, twice in a row, the pair is passed over without a word.
    void addCondition(const unsigned char** conditions, int* error) override;

    /// Removes the pairs, compared as given, case ignored. ZXPOL_E_INVALID_ARG: null list. ZXPOL_E_NOT_FOUND: a
    /// pair was not found; those before it are removed.
    void removeCondition(const unsigned char** conditions, int* error) override;

    /// Deletes the values condition1, condition2, ... up to the first gap and writes the given pairs, numbered
    /// from 1, without looking for duplicates. Codes as for addCondition.
    void replaceCondition(const unsigned char** conditions, int* error) override;

    /// Writes pair j as the value numbered indices[j] + 1. ZXPOL_E_INVALID_ARG: null argument, or an index that
    /// has no number. ZXPOL_E_ALREADY_EXISTS: another condition equals the pair. Else as addCondition, except that
    /// a failure to read the present pairs is reported.
    void updateCondition(const uint32_t* indices, const unsigned char** conditions, int* error) override;

    /// The `index`-th pair. Index 0 reads the store; so does any index while the cache is empty. *size is the
    /// record's capacity, at least 1024. A stored text without a comma leaves the record as it was, so that a caller
    /// who reuses one clears it before; a text with a side above 511 characters gives two empty sides.
    /// ZXPOL_E_INVALID_ARG: null record or size. ZXPOL_E_NO_MORE_ITEMS: past the end. ZXPOL_E_BUFFER_TOO_SMALL: *size
    /// was below 1024, or the text is of 1024 characters or more; *size is 1024 now. ZXPOL_E_INVALID_FORMAT: a stored
    /// condition is not of the string type.
    void enumCondition(uint32_t index, unsigned char* record, uint32_t* size, char* valueName, int* error) override;

    /// *failed is an array of copies closed by a null pointer, all allocated with new[]; the caller deletes the
    /// copies and the array. ZXPOL_E_INVALID_ARG and false: null list or parent. A failure to read the parent's
    /// conditions gives false with that failure.
    bool checkHierarchy(ZxPolRule* parent, const unsigned char** conditions, unsigned char*** failed,
                        int* error) override;

    /// As checkHierarchy, with the uncovered pairs in `uncovered` (may be null).
    bool findUncovered(ZxPolRule& parent, const unsigned char** conditions, zxpol::CondList* uncovered, int* error);

    /// Cuts "sender,receiver" at the first comma; blanks next to the comma go. With a side above 511 characters both
    /// are empty. ZXPOL_E_PARSE and an untouched record: no comma. ZXPOL_E_INVALID_ARG: null argument.
    void parseAddressPair(const char* text, _ZxPolAddrPairCond* pair, int* error) const;

    /// Makes the text that is stored for a pair.
    void formatAddressPair(const _ZxPolAddrPairCond* pair, std::string& text) const;

    /// Whether each side is "(" NAME ")" or a valid address pattern. A side without NUL is not.
    bool isValid(const _ZxPolAddrPairCond* pair) const;

    /// Whether the parent's pair covers the child's: on each side one of the two refers to a list, or the parent's
    /// pattern matches the child's text.
    bool _checkAddrPairRelated(const _ZxPolAddrPairCond* parentPair, const _ZxPolAddrPairCond* childPair) const;

    /// Reads all names and texts. ZXPOL_E_INVALID_FORMAT: a value is not of the string type. When the names cannot be
    /// read to their end, an enumeration yields what was read and ends with that failure.
    void _cacheAllConditions(int* error);

private:
    struct _CachedCondition {
        std::string name;
        std::string text;
    };

    void _refreshCache(int* error);
    void _cacheOne(const char* name, int* error);
    bool _makeWorkingPair(const _ZxPolAddrPairCond& given, _ZxPolAddrPairCond& working) const;
    int _find(const _ZxPolAddrPairCond& pair, uint32_t ignoredIndex, char* valueName);
    void _write(const char* valueName, const _ZxPolAddrPairCond& pair, int* error);
    void _addPair(const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working, int* error);
    void _removePair(const _ZxPolAddrPairCond& pair, int* error);
    void _removeNumbered(int* error);
    void _updatePair(uint32_t index, const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working, int* error);
    template <class Operation>
    void _forEachValid(const unsigned char** conditions, int* error, Operation operation);

    std::vector<_CachedCondition> cache;
    int endOfNames = ZXPOL_E_NO_MORE_ITEMS;  // what an enumeration ends with: a failure if it is not all there is
};
