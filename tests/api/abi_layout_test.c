/* The shape of the records that cross the interface, in the word size of this build. */
#include <stddef.h>
#include <stdint.h>

#include "c_driver.h"
#include "zxpolicy_explain.h"

#define POINTER sizeof(void*)
#define SIZE_IS(type, size) _Static_assert(sizeof(type) == (size), "size of " #type)
#define FIELD_AT(type, field, offset) _Static_assert(offsetof(type, field) == (offset), #type "." #field)

SIZE_IS(_ZxPolComHandle, 2 * POINTER);
FIELD_AT(_ZxPolComHandle, kind, 0);
FIELD_AT(_ZxPolComHandle, object, POINTER);

SIZE_IS(_ZxPolCommAttrib, 768);
FIELD_AT(_ZxPolCommAttrib, displayName, 0);
FIELD_AT(_ZxPolCommAttrib, comment, 256);

SIZE_IS(_ZxPolRuleAttr, 776);
FIELD_AT(_ZxPolRuleAttr, displayName, 0);
FIELD_AT(_ZxPolRuleAttr, comment, 256);
FIELD_AT(_ZxPolRuleAttr, order, 768);
FIELD_AT(_ZxPolRuleAttr, matchType, 772);

SIZE_IS(_ZxPolTaskAttr, 784 + POINTER);
FIELD_AT(_ZxPolTaskAttr, displayName, 0);
FIELD_AT(_ZxPolTaskAttr, comment, 256);
FIELD_AT(_ZxPolTaskAttr, order, 768);
FIELD_AT(_ZxPolTaskAttr, filter, 772);
FIELD_AT(_ZxPolTaskAttr, enable, 776);
FIELD_AT(_ZxPolTaskAttr, overridable, 780);
FIELD_AT(_ZxPolTaskAttr, setting, 784);

SIZE_IS(_ZxPolAddrListAttr, 2616);
FIELD_AT(_ZxPolAddrListAttr, displayName, 0);
FIELD_AT(_ZxPolAddrListAttr, comment, 256);
FIELD_AT(_ZxPolAddrListAttr, type, 768);
FIELD_AT(_ZxPolAddrListAttr, server, 772);
FIELD_AT(_ZxPolAddrListAttr, port, 1028);
FIELD_AT(_ZxPolAddrListAttr, searchroot, 1032);
FIELD_AT(_ZxPolAddrListAttr, authentication, 1288);
FIELD_AT(_ZxPolAddrListAttr, schematype, 1292);
FIELD_AT(_ZxPolAddrListAttr, username, 1296);
FIELD_AT(_ZxPolAddrListAttr, password, 1552);
FIELD_AT(_ZxPolAddrListAttr, filter, 1592);

SIZE_IS(_ZxPolActionAttr, 776 + POINTER);
FIELD_AT(_ZxPolActionAttr, displayName, 0);
FIELD_AT(_ZxPolActionAttr, comment, 256);
FIELD_AT(_ZxPolActionAttr, order, 768);
FIELD_AT(_ZxPolActionAttr, actionType, 772);
FIELD_AT(_ZxPolActionAttr, setting, 776);

SIZE_IS(_ZxPolAddrPairCond, 1024);
FIELD_AT(_ZxPolAddrPairCond, sender, 0);
FIELD_AT(_ZxPolAddrPairCond, receiver, 512);

SIZE_IS(_ZxPolErrorCond, 2 * POINTER);
FIELD_AT(_ZxPolErrorCond, ruleName, 0);
FIELD_AT(_ZxPolErrorCond, conds, POINTER);

SIZE_IS(_ZxPolMatchOption, 20);
FIELD_AT(_ZxPolMatchOption, matchMode, 0);
FIELD_AT(_ZxPolMatchOption, priorityType, 4);
FIELD_AT(_ZxPolMatchOption, weightType, 8);
FIELD_AT(_ZxPolMatchOption, reserved1, 12);
FIELD_AT(_ZxPolMatchOption, reserved2, 16);

SIZE_IS(_ZxPolMatchPair, 4 * POINTER);
FIELD_AT(_ZxPolMatchPair, receivers, 0);
FIELD_AT(_ZxPolMatchPair, tasks, POINTER);
FIELD_AT(_ZxPolMatchPair, taskCount, 2 * POINTER);
FIELD_AT(_ZxPolMatchPair, rulePath, 3 * POINTER);

SIZE_IS(_ZxPolMatchStep, 52 + 4 * (POINTER / 8) + 9 * POINTER);
FIELD_AT(_ZxPolMatchStep, kind, 0);
FIELD_AT(_ZxPolMatchStep, fate, 4);
FIELD_AT(_ZxPolMatchStep, side, 8);
FIELD_AT(_ZxPolMatchStep, isMatched, 12);
FIELD_AT(_ZxPolMatchStep, result, 16);
FIELD_AT(_ZxPolMatchStep, receiverIndex, 20);
FIELD_AT(_ZxPolMatchStep, conditionIndex, 24);
FIELD_AT(_ZxPolMatchStep, weight, 28);
FIELD_AT(_ZxPolMatchStep, senderWeight, 32);
FIELD_AT(_ZxPolMatchStep, receiverWeight, 36);
FIELD_AT(_ZxPolMatchStep, filter, 40);
FIELD_AT(_ZxPolMatchStep, enable, 44);
FIELD_AT(_ZxPolMatchStep, overridable, 48);
FIELD_AT(_ZxPolMatchStep, receiver, 52 + 4 * (POINTER / 8));
FIELD_AT(_ZxPolMatchStep, markRule, 52 + 4 * (POINTER / 8) + 8 * POINTER);

SIZE_IS(ZxPolMatchStepKind, 4);
SIZE_IS(ZxPolMatchSide, 4);
SIZE_IS(ZxPolMatchFate, 4);
SIZE_IS(ZxPolCondCheck, 4);
SIZE_IS(ZxPolFilterPriorityType, 4);
SIZE_IS(ZxPolMatchPriorityType, 4);
SIZE_IS(ZxPolMatchWeightType, 4);
SIZE_IS(ZxPolRefEntity, 4);
SIZE_IS(unsigned, 4);
SIZE_IS(int, 4);

_Static_assert(ZXPOL_REF_ADDRLIST == 0 && ZXPOL_REF_CLASSIFICATION == 1, "kinds of entities");
_Static_assert(ZXPOL_HANDLE_CLASS_HIVE == 0x110 && ZXPOL_HANDLE_CLASSIFICATION == 0x111 && ZXPOL_HANDLE_ACTION == 0x112,
               "kinds of classification handles");
_Static_assert((uint32_t)ZXPOL_E_CONVERSION == 0x81020009u, "a malformed text");

_Static_assert(ZXPOL_S_OK == 0x01020000, "success");
_Static_assert((uint32_t)ZXPOL_E_NO_MORE_ITEMS == 0x8102000cu, "a failure is negative");
_Static_assert(ZXPOL_E_NOT_FOUND < 0, "a failure is negative");

int zxtestLayoutFromC(void) {
    return sizeof(_ZxPolTaskAttr) == 784 + POINTER ? 0 : __LINE__;
}
