// The flat functions on matching.
#include "addrlist/addr_list_hive.h"
#include "frame/frame.h"
#include "match/match_call.h"
#include "match/rule_matcher.h"
#include "rules/rule_hive.h"

using namespace zxpol;

void zxpol_matchRuleByMailInfo(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, const char* sender,
                               const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count, int* error) {
    zxpol_matchRuleByMailInfoEx(ruleHive, addrListHive, 0, sender, receivers, pairs, count, error);
}

void zxpol_matchRuleByMailInfoEx(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode,
                                 const char* sender, const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count,
                                 int* error) {
    frame::callWithTwo<ZxPolRuleHive, ZxPolAddrListHive>(
        ruleHive, addrListHive, error, [&](ZxPolRuleHive& rules, ZxPolAddrListHive& lists) {
            matchMail(rules, lists, mode, sender, receivers, nullptr, pairs, count, error);
        });
}

void zxpol_setMatchOption(const _ZxPolMatchOption* option, int* error) {
    frame::run(error, [&] {
        if (option == nullptr) {
            *error = ZXPOL_E_INVALID_ARG;
            return;
        }
        ZxPolRuleMatcher::setGlobalOption(*option);
        *error = ZXPOL_S_OK;
    });
}

void zxpol_freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* error) {
    ZxPolRuleMatcher::freeMatchPair(pairs, count, error);
}
