// ZxPolRuleHive: the entry to the tree of rules.
#pragma once

#include <memory>
#include <string>

#include "rules/rule_anchor.h"
#include "store/store_key.h"
#include "zxpolicy.h"

class ZxPolRule;

/**
 * The rule hive: opens rules, makes the root rule, and keeps the table of exclusive filter types. It owns the key
 * "Rule". Rules opened through a hive may outlive it. Invariants: the key is open as long as the hive lives, and
 * nothing of the tree is cached: every operation goes to the store. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged. Rules returned belong to the caller; null on failure.
 */
class ZXPOL_API ZxPolRuleHive {
public:
    /// Takes `hiveKey` over. With `layout` 0 the root rule is the subkey "Mail", else the hive's key itself.
    ZxPolRuleHive(_ZxPolComHandle* hiveKey, int layout);
    ~ZxPolRuleHive();
    ZxPolRuleHive(const ZxPolRuleHive&) = delete;
    ZxPolRuleHive& operator=(const ZxPolRuleHive&) = delete;

    /// The hive's key, which stays the hive's.
    _ZxPolComHandle* hiveKey() const { return _key.get(); }

    /// Opens the hive below a key of the caller's, making it and its root when missing. A complete hive is only
    /// read. ZXPOL_E_NOT_SUPPORTED: `hiveType` is not 0.
    static ZxPolRuleHive* open(_ZxPolComHandle* parent, int hiveType, int* error);

    /// Makes what is missing of the root rule: its key, attributes and subkeys, and one condition, * to *.
    void createRootRule(int* error);

    /// Opens the root rule.
    ZxPolRule* openRootRule(int* error);

    /// Opens the rule at a full path; one trailing backslash is not part of the rule's name.
    /// ZXPOL_E_INVALID_ARG: null or empty path. ZXPOL_E_INVALID_FORMAT: no leading backslash.
    ZxPolRule* openRuleByFullPath(const char* path, int* error);

    /// Turns a full path into a path below the hive's key; false when it has no leading backslash or is null.
    bool transRulePathToKeyPath(const char* path, std::string& keyPath) const;

    /// Makes a filter type exclusive. ZXPOL_E_INVALID_ARG: `type` is neither 0 nor 1.
    void setExclusiveFilterType(uint32_t filterId, ZxPolFilterPriorityType type, int* error);

    /// Makes a filter type ordinary; the store's code when it was not exclusive.
    void removeExclusiveFilterType(uint32_t filterId, int* error);

    /// The `index`-th exclusive filter type in the store's order. ZXPOL_E_INVALID_ARG: null output. Past the end
    /// the store's own code, and the outputs are untouched.
    void enumExclusiveFilterType(uint32_t index, uint32_t* filterId, ZxPolFilterPriorityType* type, int* error);

    /// Whether a value of the hive's key is an exclusive filter type: "ExcluId" in any letter case, then exactly
    /// eight hexadecimal digits.
    static bool _isNameValid(const char* valueName);

    /// Goes on from the hive's value *valueIndex to the next exclusive filter type and leaves *valueIndex behind it:
    /// a walk through all of them reads each value once. Codes as for enumExclusiveFilterType.
    void _nextExclusiveFilterType(uint32_t* valueIndex, uint32_t* filterId, ZxPolFilterPriorityType* type, int* error);

private:
    friend class ZxPolRule;

    bool _isRootComplete();
    std::unique_ptr<ZxPolRule> _openRoot(int* error);
    void _fillRoot(int* error);

    zxpol::StoreKey _key;
    std::shared_ptr<zxpol::RuleAnchor> _anchor;
};
