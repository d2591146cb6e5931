// What the rules of a hive need of it to find other rules, also after the hive was closed.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "store/store_key.h"
#include "zxpolicy.h"

class ZxPolRule;

namespace zxpol {

// The name of a rule is its full path: empty for the root, \A\B for the child B of the root's child A.

// Turns a full path (\ for the root, \A\B) into the path of the rule's key below the hive's key, where the
// root lies at `rootPath`. False for a null path and for one that does not begin with a backslash.
bool rulePathToKeyPath(const char* path, const char* rootPath, std::string& keyPath);

class RuleAnchor;

// Opens the rule at a full path below the hive's key. ZXPOL_E_INVALID_ARG: null or empty path.
// ZXPOL_E_INVALID_FORMAT: no leading backslash. Null on failure.
std::unique_ptr<ZxPolRule> openRuleAt(_ZxPolComHandle* hiveKey, const std::shared_ptr<RuleAnchor>& anchor,
                                      const char* path, int* error);

// Shared by a hive and all rules opened through it: the root's path and a key on the hive of its own. Rules
// of one hive may be in use by different threads, so the key is used by one at a time.
class RuleAnchor {
public:
    // Opens a second key on the hive; a failure is reported when the key is first needed.
    RuleAnchor(_ZxPolComHandle* hiveKey, const char* rootPath);

    const char* rootPath() const { return _rootPath.c_str(); }

    // Opens another rule of the tree; `self` is the pointer through which this object is shared.
    static std::unique_ptr<ZxPolRule> openRule(const std::shared_ptr<RuleAnchor>& self, const char* path, int* error);

private:
    std::mutex _mutex;
    int _keyError = ZXPOL_S_OK;
    StoreKey _key;
    std::string _rootPath;
};

}  // namespace zxpol
