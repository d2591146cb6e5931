// The flat functions on the rule hive.
#include "frame/frame.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"

using namespace zxpol;

_ZxPolComHandle* zxpol_openRuleHive(_ZxPolComHandle* key, int hiveType, int* error) {
    return frame::openHive<ZxPolRuleHive>(
        key, error, [&](_ZxPolComHandle* storeKey) { return ZxPolRuleHive::open(storeKey, hiveType, error); });
}

void zxpol_closeRuleHive(_ZxPolComHandle* hive, int* error) {
    frame::close<ZxPolRuleHive>(hive, error);
}

_ZxPolComHandle* zxpol_openRootRule(_ZxPolComHandle* hive, int* error) {
    return frame::open<ZxPolRuleHive, ZxPolRule>(hive, error,
                                                 [&](ZxPolRuleHive& rules) { return rules.openRootRule(error); });
}

_ZxPolComHandle* zxpol_openRuleByFullName(_ZxPolComHandle* hive, const char* path, int* error) {
    return frame::open<ZxPolRuleHive, ZxPolRule>(
        hive, error, [&](ZxPolRuleHive& rules) { return rules.openRuleByFullPath(path, error); });
}

void zxpol_setExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, ZxPolFilterPriorityType type, int* error) {
    frame::call<ZxPolRuleHive>(hive, error,
                               [&](ZxPolRuleHive& rules) { rules.setExclusiveFilterType(filterId, type, error); });
}

void zxpol_removeExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, int* error) {
    frame::call<ZxPolRuleHive>(hive, error,
                               [&](ZxPolRuleHive& rules) { rules.removeExclusiveFilterType(filterId, error); });
}

void zxpol_enumExclusiveFilterType(_ZxPolComHandle* hive, uint32_t index, uint32_t* filterId,
                                   ZxPolFilterPriorityType* type, int* error) {
    frame::call<ZxPolRuleHive>(
        hive, error, [&](ZxPolRuleHive& rules) { rules.enumExclusiveFilterType(index, filterId, type, error); });
}
