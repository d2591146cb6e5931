// The flat function that matches and tells how.
#include "addrlist/addr_list_hive.h"
#include "frame/frame.h"
#include "match/match_call.h"
#include "rules/rule_hive.h"
#include "zxpolicy_explain.h"

using namespace zxpol;

void zxpol_explainMatch(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode, const char* sender,
                        const char** receivers, ZxPolMatchObserverFunction observer, void* context,
                        _ZxPolMatchPair** pairs, uint32_t* count, int* error) {
    frame::callWithTwo<ZxPolRuleHive, ZxPolAddrListHive>(
        ruleHive, addrListHive, error, [&](ZxPolRuleHive& rules, ZxPolAddrListHive& lists) {
            if (observer == nullptr) {
                *error = ZXPOL_E_INVALID_ARG;
                return;
            }
            FunctionObserver told(observer, context);
            matchMail(rules, lists, mode, sender, receivers, &told, pairs, count, error);
        });
}
